#include "tests/fileops/VersionedFile.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstring>
#include <cwchar>

namespace auttest
{
namespace
{
std::string besideThisProgram(const char* name)
{
    char path[MAX_PATH];
    const DWORD length = ::GetModuleFileNameA(nullptr, path, sizeof path);
    const std::string program(path, length);
    return program.substr(0, program.rfind('\\')) + "\\versiondlls\\" + name;
}

void put(std::string& bytes, unsigned short word) { bytes.append(reinterpret_cast<const char*>(&word), sizeof word); }

void put(std::string& bytes, const std::wstring& text)
{
    for (const wchar_t c : text)
        put(bytes, static_cast<unsigned short>(c));
    put(bytes, static_cast<unsigned short>(0));
}

void align(std::string& bytes)
{
    while (bytes.size() % 4 != 0)
        bytes += '\0';
}

/// One block: its length, the length of its value (in characters for a text), whether it is a text, its name, the
/// value and the blocks below it, each aligned to 32 bits.
std::string block(const std::wstring& name, bool isText, const std::string& value, unsigned short valueLength,
                  const std::vector<std::string>& children)
{
    std::string bytes(sizeof(unsigned short), '\0');
    put(bytes, valueLength);
    put(bytes, static_cast<unsigned short>(isText ? 1 : 0));
    put(bytes, name);
    align(bytes);
    bytes += value;
    for (const std::string& child : children)
    {
        align(bytes);
        bytes += child;
    }
    const auto length = static_cast<unsigned short>(bytes.size());
    std::memcpy(bytes.data(), &length, sizeof length);
    return bytes;
}

DWORD wordPair(unsigned short high, unsigned short low) { return static_cast<DWORD>(high) << 16 | low; }

std::string fixedRecord(const VersionResource& resource)
{
    VS_FIXEDFILEINFO record{};
    record.dwSignature = 0xFEEF04BD;
    record.dwStrucVersion = 0x00010000;
    record.dwFileVersionMS = wordPair(resource.file[0], resource.file[1]);
    record.dwFileVersionLS = wordPair(resource.file[2], resource.file[3]);
    record.dwProductVersionMS = wordPair(resource.product[0], resource.product[1]);
    record.dwProductVersionLS = wordPair(resource.product[2], resource.product[3]);
    return {reinterpret_cast<const char*>(&record), sizeof record};
}

std::string stringTable(const VersionResource& resource)
{
    std::vector<std::string> strings;
    for (const auto& [name, text] : resource.strings)
    {
        std::string value;
        put(value, text);
        strings.push_back(block(name, true, value, static_cast<unsigned short>(text.size() + 1), {}));
    }
    wchar_t name[9];
    std::swprintf(name, 9, L"%04X%04X", resource.translations.front().first, resource.translations.front().second);
    return block(L"StringFileInfo", true, "", 0, {block(name, true, "", 0, strings)});
}

std::string translationTable(const VersionResource& resource)
{
    std::string entries;
    for (const auto& [language, codePage] : resource.translations)
    {
        put(entries, language);
        put(entries, codePage);
    }
    if (resource.cutTranslation)
        entries.resize(2);
    return block(L"VarFileInfo", true, "", 0,
                 {block(L"Translation", false, entries, static_cast<unsigned short>(entries.size()), {})});
}
} // namespace

void writeBlankLibrary(const std::string& path)
{
    ASSERT_TRUE(::CopyFileA(besideThisProgram("blank.dll").c_str(), path.c_str(), FALSE)) << ::GetLastError();
}

void writeLibrary(const std::string& path, const VersionResource& resource)
{
    writeBlankLibrary(path);
    std::vector<std::string> children;
    if (!resource.translations.empty())
        children = {stringTable(resource), translationTable(resource)};
    const std::string fixed = resource.fixedRecord ? fixedRecord(resource) : std::string();
    std::string bytes = block(L"VS_VERSION_INFO", false, fixed, static_cast<unsigned short>(fixed.size()), children);

    const HANDLE update = ::BeginUpdateResourceA(path.c_str(), FALSE);
    ASSERT_NE(nullptr, update) << ::GetLastError();
    EXPECT_TRUE(::UpdateResourceA(update, MAKEINTRESOURCEA(16), MAKEINTRESOURCEA(1), 0x0409, bytes.data(),
                                  static_cast<DWORD>(bytes.size())));
    ASSERT_TRUE(::EndUpdateResourceA(update, FALSE)) << ::GetLastError();
}

void writeLibrary(const std::string& path, const Version& version)
{
    VersionResource resource;
    resource.file = version;
    writeLibrary(path, resource);
}

std::string compiledLibrary() { return besideThisProgram("versioned.dll"); }
} // namespace auttest
