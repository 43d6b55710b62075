#include "state/Bundle.h"

#include "common/Text.h"
#include "machine/Client.h"
#include "machine/Owners.h"
#include "state/RegistryState.h"

#include <algorithm>
#include <optional>

namespace autool
{
namespace
{
/// Larger ones are no log or list of the client.
constexpr unsigned __int64 kMaxFileBytes = 64ULL * 1024 * 1024;

/// The whole file, which others may be writing; nothing, and the reason, when it cannot be read.
std::optional<std::string> readWhole(const std::string& path, std::string& why)
{
    const Handle file(::CreateFileW(toWide(path).c_str(), GENERIC_READ,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    if (!file)
    {
        why = systemError(::GetLastError());
        return std::nullopt;
    }
    LARGE_INTEGER size{};
    if (!::GetFileSizeEx(file.get(), &size) || static_cast<unsigned __int64>(size.QuadPart) > kMaxFileBytes)
    {
        why = "too large: " + sizeText(static_cast<unsigned __int64>(size.QuadPart));
        return std::nullopt;
    }
    std::string bytes(static_cast<std::size_t>(size.QuadPart), '\0');
    DWORD read = 0;
    if (!::ReadFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr))
    {
        why = systemError(::GetLastError());
        return std::nullopt;
    }
    bytes.resize(read);
    return bytes;
}

class Writer
{
public:
    Writer(std::string folder, const MachineState& state, const Step& step)
        : m_folder(std::move(folder)), m_state(state), m_step(step)
    {
        while (m_folder.size() > 3 && (m_folder.back() == '\\' || m_folder.back() == '/'))
            m_folder.pop_back();
        if (isFile(m_folder))
            throw NoBundle(m_folder + " is a file");
        if (isFolder(m_folder) && !filesOf(m_folder, "*", true).empty())
            throw NoBundle(m_folder + " is not empty: nothing in it is overwritten");
        if (!isFolder(m_folder) && !::CreateDirectoryW(toWide(m_folder).c_str(), nullptr))
            throw NoBundle(m_folder + " cannot be made: " + systemError(::GetLastError()));
    }

    BundleReport write()
    {
        store("state.json", m_state.json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
        store("registry.reg", registryExport(m_state.tree, m_state.secrets));
        const ClientFolders folders = readClientFolders();
        copy(folders.data, "7xAutoupdateLog*.xml", "log-machine");
        if (::_stricmp(folders.userLog.c_str(), folders.data.c_str()) != 0)
            copy(folders.userLog, "7xAutoupdateLog*.xml", "log-user");
        copy(folders.data, "*.lst", "lists");
        copy(folders.data, "*ProductList.xml", "lists");
        if (folders.data.empty())
            m_report.errors.emplace_back("the client's data folder is not set: no machine log, no lists");
        else if (!isFolder(folders.data))
            m_report.errors.push_back("the client's data folder " + folders.data +
                                      " is missing: no machine log, no lists");
        writeContents();
        return std::move(m_report);
    }

private:
    void copy(const std::string& source, const std::string& pattern, const std::string& below)
    {
        for (const FileEntry& file : filesOf(source, pattern))
        {
            const std::string path = source + "\\" + file.name;
            m_step("Copying " + path);
            std::string why;
            const auto bytes = readWhole(path, why);
            if (!bytes)
            {
                m_report.errors.push_back(path + ": " + why);
                continue;
            }
            ::CreateDirectoryW(toWide(m_folder + "\\" + below).c_str(), nullptr);
            store(below + "\\" + file.name, m_state.secrets.maskBytes(*bytes));
        }
    }

    void store(const std::string& name, const std::string& bytes)
    {
        const std::string path = m_folder + "\\" + name;
        const Handle file(
            ::CreateFileW(toWide(path).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
        DWORD written = 0;
        if (!file || !::WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) ||
            written != bytes.size())
            m_report.errors.push_back(path + " cannot be written: " + systemError(::GetLastError()));
        else
            m_report.files.push_back(name);
    }

    void writeContents()
    {
        std::string text = "Written by autool state --bundle. Credentials are hidden in all files.\r\n\r\n";
        for (const std::string& file : m_report.files)
            text += file + "\r\n";
        text += "\r\nErrors: " + std::to_string(m_report.errors.size()) + "\r\n";
        for (const std::string& error : m_report.errors)
            text += error + "\r\n";
        store("contents.txt", text);
    }

    std::string m_folder;
    const MachineState& m_state;
    const Step& m_step;
    BundleReport m_report;
};
} // namespace

BundleReport writeBundle(const std::string& folder, const MachineState& state, const Step& step)
{
    return Writer(folder, state, step).write();
}
} // namespace autool
