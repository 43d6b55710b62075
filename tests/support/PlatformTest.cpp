// What the suites take for granted about the Windows prefix they run in.
#include <gtest/gtest.h>

#include <windows.h>

#include <malloc.h>
#include <msxml.h>
#include <objbase.h>

#include <cstring>
#include <string>

namespace
{
/// COM for one test.
struct Apartment
{
    explicit Apartment(DWORD kind) { EXPECT_EQ(S_OK, ::CoInitializeEx(nullptr, kind)); }
    ~Apartment() { ::CoUninitialize(); }
};

class MsxmlDocument : public ::testing::TestWithParam<DWORD>
{
};
} // namespace

TEST_P(MsxmlDocument, ValidatesWhileParsingUnlessToldOtherwise)
{
    const Apartment apartment(GetParam());
    const CLSID documentClass = {0x2933BF90, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
    IXMLDOMDocument* document = nullptr;
    ASSERT_EQ(S_OK, ::CoCreateInstance(documentClass, nullptr, CLSCTX_INPROC_SERVER, IID_IXMLDOMDocument,
                                       reinterpret_cast<void**>(&document)));
    VARIANT_BOOL validates = VARIANT_FALSE;
    EXPECT_EQ(S_OK, document->get_validateOnParse(&validates));
    EXPECT_EQ(VARIANT_TRUE, validates);

    BSTR text = ::SysAllocString(L"<a><b>1</b></a>");
    VARIANT_BOOL loaded = VARIANT_FALSE;
    EXPECT_EQ(S_OK, document->loadXML(text, &loaded));
    EXPECT_EQ(VARIANT_TRUE, loaded);
    ::SysFreeString(text);
    document->Release();
}
INSTANTIATE_TEST_SUITE_P(BothApartments, MsxmlDocument,
                         ::testing::Values(DWORD{COINIT_APARTMENTTHREADED}, DWORD{COINIT_MULTITHREADED}));

TEST(Prefix, TextsAreWestern) { EXPECT_EQ(1252u, ::GetACP()); }

TEST(Prefix, TheCurrentFolderIsTheSuitesOwn)
{
    char folder[MAX_PATH];
    ASSERT_NE(0u, ::GetCurrentDirectoryA(sizeof folder, folder));
    EXPECT_STRCASEEQ("C:\\suite", folder);
}

TEST(Prefix, UserFoldersAreInsideThePrefix)
{
    const std::string documents = std::string(std::getenv("USERPROFILE")) + "\\Documents";
    const DWORD attributes = ::GetFileAttributesA(documents.c_str());
    ASSERT_NE(INVALID_FILE_ATTRIBUTES, attributes);
    EXPECT_EQ(0u, attributes & FILE_ATTRIBUTE_REPARSE_POINT);
}

TEST(Prefix, AReadOnlyFileCannotBeOpenedForWriting)
{
    const HANDLE made =
        ::CreateFileA("readonly.txt", GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_READONLY, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, made);
    ::CloseHandle(made);
    EXPECT_EQ(INVALID_HANDLE_VALUE,
              ::CreateFileA("readonly.txt", GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, ::GetLastError());
    ::SetFileAttributesA("readonly.txt", FILE_ATTRIBUTE_NORMAL);
    EXPECT_TRUE(::DeleteFileA("readonly.txt"));
}

TEST(Prefix, AnOverrunOfOneByteDamagesTheHeapVisibly)
{
    if (::GetModuleHandleA("autools_guard.dll") != nullptr)
        GTEST_SKIP() << "under guard pages the overrun ends the program at once, as the suite guard shows";
    char* const block = static_cast<char*>(std::malloc(24));
    ASSERT_NE(nullptr, block);
    char* volatile end = block + 24;
    const char kept = *end;
    *end = static_cast<char>(kept + 1);
    EXPECT_EQ(_HEAPBADNODE, ::_heapchk());
    *end = kept;
    EXPECT_EQ(_HEAPOK, ::_heapchk());
    std::free(block);
}

TEST(PrefixDeathTest, ACrashEndsTheProgramWithItsExceptionCode)
{
    const auto crash = []
    {
        int* volatile nowhere = nullptr;
        *nowhere = 1;
    };
    EXPECT_EXIT(crash(), ::testing::ExitedWithCode(static_cast<int>(0xC0000005)), "");
}
