#include "tests/fileops/InstallerFixture.h"

#include "tests/support/ClientRegistry.h"

#include <windows.h>

namespace auttest
{
namespace
{
constexpr char kServerKey[] = "Software\\Classes\\CLSID\\{000C1090-0000-0000-C000-000000000046}\\InprocServer32";
constexpr char kInstallerKey[] = "Software\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData\\S-1-5-18";

std::string frontPath()
{
    char path[MAX_PATH];
    const DWORD length = ::GetModuleFileNameA(nullptr, path, sizeof path);
    const std::string program(path, length);
    return program.substr(0, program.rfind('\\')) + "\\msifront\\msifront.dll";
}

/// How the installer writes a code in the registry: the first three groups backwards, the rest in swapped pairs.
std::string packed(const std::string& code)
{
    std::string out;
    for (const auto& [first, length] : {std::pair(0, 8), std::pair(9, 4), std::pair(14, 4)})
        for (int i = length - 1; i >= 0; --i)
            out += code[static_cast<std::size_t>(first + i)];
    std::string pairs = code.substr(19, 4) + code.substr(24);
    for (std::size_t i = 0; i + 1 < pairs.size(); i += 2)
        std::swap(pairs[i], pairs[i + 1]);
    return out + pairs;
}

void restore(const char* name, const std::optional<std::string>& text)
{
    const Registry machine;
    if (text)
        machine.write(kServerKey, name, *text);
    else
        machine.removeValue(kServerKey, name);
}
} // namespace

InstallerFixture::InstallerFixture()
    : m_library(::LoadLibraryA(frontPath().c_str())), m_server(Registry().readText(kServerKey, "")),
      m_threadingModel(Registry().readText(kServerKey, "ThreadingModel"))
{
    EXPECT_TRUE(m_library) << frontPath();
    const auto function =
        reinterpret_cast<decltype(&msiFront)>(reinterpret_cast<void*>(::GetProcAddress(m_library.get(), "msiFront")));
    m_front = function();
    registerFront();
}

InstallerFixture::~InstallerFixture()
{
    m_front->creation = S_OK;
    m_front->outcome = S_OK;
    m_front->answer = nullptr;
    restore("", m_server);
    restore("ThreadingModel", m_threadingModel);
    Registry().removeKey(std::string(kInstallerKey) + "\\Components\\" + packed(kComponentCode));
    Registry().removeKey(std::string(kInstallerKey) + "\\Products\\" + packed(kProductCode));
}

void InstallerFixture::install(const std::string& path)
{
    const Registry installer(HKEY_LOCAL_MACHINE, kInstallerKey);
    const std::string product = packed(kProductCode);
    installer.write("Components\\" + packed(kComponentCode), product.c_str(), path);
    installer.write("Products\\" + product + "\\InstallProperties", "WindowsInstaller", 1);
}

void InstallerFixture::registerServer(const std::string& path)
{
    if (path.empty())
        Registry().removeKey(kServerKey);
    else
        Registry().write(kServerKey, "", path);
}

void InstallerFixture::registerFront(const char* threadingModel)
{
    registerServer(frontPath());
    Registry().write(kServerKey, "ThreadingModel", threadingModel);
}
} // namespace auttest
