#include "tests/companions/TransferLibrary.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <set>
#include <string>
#include <vector>

namespace
{
HMODULE library()
{
    auttest::TransferLibrary::get();
    return ::GetModuleHandleA("7xFileTransfer.dll");
}

template <typename T> const T* at(HMODULE module, DWORD offset)
{
    return reinterpret_cast<const T*>(reinterpret_cast<const char*>(module) + offset);
}
} // namespace

TEST(LibraryFile, ExportsItsFiveEntryPointsAndNothingElse)
{
    const HMODULE module = library();
    ASSERT_NE(nullptr, module);
    const auto* const dos = at<IMAGE_DOS_HEADER>(module, 0);
    const auto* const headers = at<IMAGE_NT_HEADERS>(module, static_cast<DWORD>(dos->e_lfanew));
    const auto* const exports = at<IMAGE_EXPORT_DIRECTORY>(
        module, headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress);
    std::set<std::string> names;
    for (DWORD i = 0; i < exports->NumberOfNames; ++i)
        names.insert(at<char>(module, at<DWORD>(module, exports->AddressOfNames)[i]));
    EXPECT_EQ((std::set<std::string>{"DeleteConnectionParams", "DeleteFileTransfer", "Download", "NewConnectionParams",
                                     "NewFileTransfer"}),
              names);
    // Numbers without a function, which one linker leaves at the front, aside.
    DWORD functions = 0;
    for (DWORD i = 0; i < exports->NumberOfFunctions; ++i)
        functions += at<DWORD>(module, exports->AddressOfFunctions)[i] != 0;
    EXPECT_EQ(5u, functions);
}

TEST(LibraryFile, NamesItselfInItsVersionResource)
{
    char path[MAX_PATH];
    ASSERT_NE(0u, ::GetModuleFileNameA(library(), path, MAX_PATH));
    const DWORD size = ::GetFileVersionInfoSizeA(path, nullptr);
    ASSERT_NE(0u, size);
    std::vector<char> info(size);
    ASSERT_TRUE(::GetFileVersionInfoA(path, 0, size, info.data()));
    const std::pair<const char*, const char*> texts[] = {{"InternalName", "7xFileTransfer"},
                                                         {"OriginalFilename", "7xFileTransfer.dll"},
                                                         {"FileVersion", AUTTEST_PROJECT_VERSION},
                                                         {"CompanyName", "Velmora"}};
    for (const auto& [name, expected] : texts)
    {
        void* text = nullptr;
        UINT length = 0;
        ASSERT_TRUE(
            ::VerQueryValueA(info.data(), ("\\StringFileInfo\\040904E4\\" + std::string(name)).c_str(), &text, &length))
            << name;
        EXPECT_STREQ(expected, static_cast<const char*>(text));
    }
}
