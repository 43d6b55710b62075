#ifndef AUTOOLS_TESTS_EXAMPLES_UPDATECYCLEFIXTURE_H
#define AUTOOLS_TESTS_EXAMPLES_UPDATECYCLEFIXTURE_H

#include "platform/UniqueResource.h"
#include "tests/support/ClientRegistry.h"
#include "tests/support/TestFolder.h"
#include "webconfigurator/WebConfigurator.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace auttest
{
inline const char* const kCertificate = "UzFNUExFLUNJRC0x";

/// Runs the sample host against a server of this process.
class UpdateCycleFixture : public ::testing::Test
{
protected:
    UpdateCycleFixture() { server.emplace(AUTOOLS_WEBCONFIGURATOR_TEMPLATES); }

    std::string cycleOptions() const
    {
        return "--server " + server->host() + " --cid " + kCertificate + " --data \"" + folder.path() + "\"";
    }
    /// Runs the host; its output is kept.
    DWORD run(const std::string& options)
    {
        char own[MAX_PATH] = {};
        ::GetModuleFileNameA(nullptr, own, MAX_PATH);
        std::string command = own;
        command = '"' + command.substr(0, command.find_last_of('\\')) + "\\updatecycle.exe\" " + options;

        // The first program of a Windows session may start others that inherit the file and outlive it.
        SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
        static int runs = 0;
        const std::string path =
            tempPath() + "\\updatecycle-" + std::to_string(::GetCurrentProcessId()) + "-" + std::to_string(++runs);
        const aut::UniqueFile file(::CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE,
                                                 FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, &inheritable,
                                                 CREATE_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE, nullptr));
        STARTUPINFOA startup = {};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = file.get();
        startup.hStdError = file.get();
        PROCESS_INFORMATION started = {};
        if (!::CreateProcessA(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &started))
        {
            ADD_FAILURE() << "updatecycle.exe does not start: " << ::GetLastError();
            return STILL_ACTIVE;
        }
        const aut::UniqueHandle process(started.hProcess);
        const aut::UniqueHandle thread(started.hThread);
        EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(process.get(), 120'000));
        DWORD code = STILL_ACTIVE;
        ::GetExitCodeProcess(process.get(), &code);
        output = contentOf(file.get());
        return code;
    }
    static std::string contentOf(HANDLE file)
    {
        std::string content(::GetFileSize(file, nullptr), '\0');
        DWORD read = 0;
        ::SetFilePointer(file, 0, nullptr, FILE_BEGIN);
        EXPECT_TRUE(::ReadFile(file, content.data(), static_cast<DWORD>(content.size()), &read, nullptr));
        content.resize(read);
        return content;
    }
    void expectOutput(const std::string& text) const
    {
        EXPECT_NE(std::string::npos, output.find(text)) << "missing: " << text << "\nin: " << output;
    }
    void expectNoOutput(const std::string& text) const
    {
        EXPECT_EQ(std::string::npos, output.find(text)) << "unexpected: " << text << "\nin: " << output;
    }

    ClientRegistry registry;
    TestFolder folder;
    std::optional<webconf_sample::WebConfigurator> server;
    std::string output;
};
} // namespace auttest

#endif
