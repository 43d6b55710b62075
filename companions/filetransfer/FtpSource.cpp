#include "filetransfer/WinInet.h"

#include <charconv>
#include <string>

namespace filetransfer
{
namespace
{
/// The server's last answer on this thread: the three digits of its last line that has some, 0 without; `text` receives
/// what follows them.
int lastReply(std::string& text)
{
    char buffer[1024];
    DWORD code = 0;
    DWORD length = sizeof(buffer) - 1;
    text.clear();
    if (!::InternetGetLastResponseInfoA(&code, buffer, &length))
        return 0;
    buffer[length < sizeof(buffer) ? length : sizeof(buffer) - 1] = '\0';
    int reply = 0;
    std::string_view lines = buffer;
    while (!lines.empty())
    {
        const std::string_view line = lines.substr(0, lines.find_first_of("\r\n"));
        lines.remove_prefix(line.size() < lines.size() ? line.size() + 1 : line.size());
        int number = 0;
        const auto [last, error] = std::from_chars(line.data(), line.data() + line.size(), number);
        if (error != std::errc() || last != line.data() + 3)
            continue;
        reply = number;
        text = line.substr(line.size() > 4 ? 4 : 3);
    }
    return reply;
}

class FtpSource final : public Source
{
public:
    explicit FtpSource(Request& request) : m_wanted(request) {}

    Outcome open() override
    {
        Outcome outcome = openInternet(m_wanted, m_internet);
        if (outcome.good())
            outcome = openSession(m_internet.get(), m_wanted.url, INTERNET_SERVICE_FTP, m_session);
        if (!outcome.good())
            return withReply(outcome);
        setTimeOuts(m_session.get(), m_wanted.params);
        askSize();
        m_file.reset(::FtpOpenFileA(m_session.get(), m_wanted.url.object.c_str(), GENERIC_READ,
                                    FTP_TRANSFER_TYPE_BINARY | INTERNET_FLAG_RELOAD | INTERNET_FLAG_NO_CACHE_WRITE, 0));
        return m_file ? Outcome() : withReply(lastInternetError());
    }

    Outcome read(char* into, std::uint32_t bytes, std::uint32_t& got) override
    {
        return readInternet(m_file.get(), into, bytes, got);
    }

    /// A data connection that ends says nothing: the size asked for before does, and so does the server's last word.
    /// Without a size that word must be that the transfer is complete: a server that died says nothing more.
    Outcome confirmWhole(std::uint64_t received) override
    {
        m_file.reset(); // reads the server's reply to the transfer
        std::string text;
        const int reply = lastReply(text);
        const bool whole = m_announcedLength ? received == *m_announcedLength && reply < 400 : reply / 100 == 2;
        return whole ? Outcome() : Outcome{kBodyCutOff, 0, true};
    }

private:
    /// Servers tell the size of a file only for the binary type. One that does not know the command loses nothing.
    void askSize()
    {
        const std::string command = "SIZE " + m_wanted.url.object;
        if (!::FtpCommandA(m_session.get(), FALSE, FTP_TRANSFER_TYPE_BINARY, "TYPE I", 0, nullptr) ||
            !::FtpCommandA(m_session.get(), FALSE, FTP_TRANSFER_TYPE_BINARY, command.c_str(), 0, nullptr))
            return;
        std::string text;
        std::uint64_t size = 0;
        if (lastReply(text) == 213 && std::from_chars(text.data(), text.data() + text.size(), size).ec == std::errc())
            m_announcedLength = size;
    }

    /// Replies from 400 to 499 say that the same request may succeed later.
    static Outcome withReply(Outcome outcome)
    {
        std::string text;
        const int reply = lastReply(text);
        if (outcome.systemError == ERROR_INTERNET_EXTENDED_ERROR)
            outcome.mayPass = reply >= 400 && reply < 500;
        return outcome;
    }

    Request& m_wanted;
    UniqueInternet m_internet;
    UniqueInternet m_session;
    UniqueInternet m_file;
};
} // namespace

std::unique_ptr<Source> makeFtpSource(Request& request) { return std::make_unique<FtpSource>(request); }
} // namespace filetransfer
