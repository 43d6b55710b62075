#include "tests/torture/leaks/ClientInstallation.h"

#include <windows.h>

namespace torture
{
std::string programFolder()
{
    char path[MAX_PATH] = "";
    const std::string program(path, ::GetModuleFileNameA(nullptr, path, sizeof path));
    return program.substr(0, program.rfind('\\'));
}

ClientInstallation::ClientInstallation() : m_server(AUTOOLS_WEBCONFIGURATOR_TEMPLATES)
{
    m_registry.write("", "Path", m_folder.makeFolder("client"));
    m_registry.write("", "DataPath", m_folder.makeFolder("data"));
    m_registry.write("", "CompPath", m_folder.makeFolder("components"));
    m_registry.write("", "Current_Kernel_Version", "3.3.302B1_EN");
    m_registry.write("", "AU_Product_Version", "3.3.302B1_EN");
    m_registry.write("Config", "WebServer", m_server.host() + "/WebConfV1");
    m_registry.write("Config", "TestCID", kCid);
    ::CopyFileA((programFolder() + "\\mapfile\\MapFile.dll").c_str(), (m_folder / "client\\MapFile.dll").c_str(),
                FALSE);
    ::CopyFileA((std::string(AUTOOLS_WEBCONFIGURATOR_TEMPLATES) + "\\kernel-configuration.xml").c_str(),
                (m_folder / "client\\AUKernelData.xml").c_str(), FALSE);
    m_folder.writeFile("components\\comp\\1.0B1_EN\\comp.map", "server=update.example\n");
    m_folder.writeFile("files\\a.txt", std::string(5000, 'a'));
    m_folder.writeFile("files\\b.txt", std::string(5000, 'b'));
    m_folder.writeFile("tree\\one\\c.txt", "c");
    m_folder.writeFile("tree\\two\\d.txt", "d");
}
} // namespace torture
