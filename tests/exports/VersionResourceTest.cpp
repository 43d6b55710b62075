#include <gtest/gtest.h>

#include <windows.h>

#include <string>
#include <vector>

namespace
{
/// The version resource of a library beside this program.
class VersionResource
{
public:
    explicit VersionResource(const std::string& library)
    {
        char program[MAX_PATH];
        ::GetModuleFileNameA(nullptr, program, sizeof program);
        std::string path = program;
        path = path.substr(0, path.rfind('\\') + 1) + library;
        m_data.resize(::GetFileVersionInfoSizeA(path.c_str(), nullptr));
        const DWORD size = static_cast<DWORD>(m_data.size());
        EXPECT_TRUE(size != 0 && ::GetFileVersionInfoA(path.c_str(), 0, size, m_data.data()));
    }
    bool exists() const { return !m_data.empty(); }

    std::string text(const char* name) const
    {
        void* value = nullptr;
        UINT length = 0;
        const std::string path = std::string("\\StringFileInfo\\040904E4\\") + name;
        return ::VerQueryValueA(m_data.data(), path.c_str(), &value, &length) ? static_cast<const char*>(value)
                                                                              : "none";
    }
    std::string number() const
    {
        void* value = nullptr;
        UINT length = 0;
        if (!::VerQueryValueA(m_data.data(), "\\", &value, &length))
            return "none";
        const auto* const fixed = static_cast<const VS_FIXEDFILEINFO*>(value);
        return std::to_string(HIWORD(fixed->dwFileVersionMS)) + "." + std::to_string(LOWORD(fixed->dwFileVersionMS)) +
               "." + std::to_string(HIWORD(fixed->dwFileVersionLS));
    }

private:
    std::vector<char> m_data;
};

class ShippedLibrary : public ::testing::TestWithParam<const char*>
{
};
} // namespace

TEST_P(ShippedLibrary, CarriesTheVersionOfTheProject)
{
    const VersionResource resource(GetParam());
    ASSERT_TRUE(resource.exists());
    EXPECT_EQ(AUTOOLS_VERSION, resource.number());
    EXPECT_EQ(AUTOOLS_VERSION, resource.text("FileVersion"));
    EXPECT_EQ(AUTOOLS_VERSION, resource.text("ProductVersion"));
    EXPECT_EQ("Velmora", resource.text("CompanyName"));
    EXPECT_EQ(GetParam(), resource.text("OriginalFilename"));
}
INSTANTIATE_TEST_SUITE_P(Every, ShippedLibrary, ::testing::Values("7xAutoUpdateTools.dll", "7xFileTransfer.dll"));
