#include "common/Console.h"

#include "common/Text.h"

#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace autool
{
namespace
{
constexpr std::size_t kBufferBytes = 64 * 1024;
constexpr DWORD kVirtualTerminal = 0x0004; // ENABLE_VIRTUAL_TERMINAL_PROCESSING, which older headers lack

bool coloursAreUnwanted()
{
    const char* const noColour = std::getenv("NO_COLOR");
    const char* const terminal = std::getenv("TERM");
    return (noColour != nullptr && *noColour != '\0') || (terminal != nullptr && std::strcmp(terminal, "dumb") == 0);
}

class StandardStream : public Stream
{
public:
    explicit StandardStream(DWORD which) : m_handle(::GetStdHandle(which))
    {
        DWORD mode = 0;
        m_isTerminal = ::GetConsoleMode(m_handle, &mode) != FALSE;
        m_hasColours =
            m_isTerminal && !coloursAreUnwanted() && ::SetConsoleMode(m_handle, mode | kVirtualTerminal) != FALSE;
        CONSOLE_SCREEN_BUFFER_INFO info{};
        if (m_isTerminal && ::GetConsoleScreenBufferInfo(m_handle, &info) != FALSE)
            m_columns = static_cast<std::size_t>(std::max(info.srWindow.Right - info.srWindow.Left + 1, 20));
        if (m_hasColours)
            m_modeBefore = mode;
    }
    ~StandardStream() override
    {
        try
        {
            StandardStream::flush();
        }
        catch (const std::exception&)
        {
            // Nobody is left to be told.
        }
        if (m_hasColours)
            ::SetConsoleMode(m_handle, m_modeBefore);
    }
    StandardStream(const StandardStream&) = delete;
    StandardStream& operator=(const StandardStream&) = delete;

    void write(std::string_view utf8) override
    {
        m_buffer += utf8;
        if (m_buffer.size() >= kBufferBytes)
            flush();
    }
    void flush() override
    {
        const std::string bytes = std::exchange(m_buffer, {});
        if (m_isTerminal)
            writeWide(toWide(bytes));
        else
            writeBytes(bytes);
    }
    bool isTerminal() const override { return m_isTerminal; }
    bool hasColours() const override { return m_hasColours; }
    std::size_t columns() const override { return m_columns; }

private:
    void writeWide(std::wstring_view text) const
    {
        constexpr std::size_t kAtOnce = 8192; // a console takes no more than some 30,000 in one call
        for (; !text.empty(); text.remove_prefix(std::min(text.size(), kAtOnce)))
        {
            DWORD written = 0;
            const auto length = static_cast<DWORD>(std::min(text.size(), kAtOnce));
            if (::WriteConsoleW(m_handle, text.data(), length, &written, nullptr) == FALSE)
                throw OutputClosed();
        }
    }
    void writeBytes(std::string_view bytes) const
    {
        while (!bytes.empty())
        {
            DWORD written = 0;
            if (::WriteFile(m_handle, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) == FALSE ||
                written == 0)
                throw OutputClosed();
            bytes.remove_prefix(written);
        }
    }

    HANDLE m_handle;
    bool m_isTerminal = false;
    bool m_hasColours = false;
    DWORD m_modeBefore = 0;
    std::size_t m_columns = kMaxColumns;
    std::string m_buffer;
};

const char* sequenceOf(Style style)
{
    switch (style)
    {
    case Style::Heading:
        return "\x1b[1m";
    case Style::Dim:
        return "\x1b[90m";
    case Style::Good:
        return "\x1b[32m";
    case Style::Warning:
        return "\x1b[33m";
    case Style::Bad:
        return "\x1b[31m";
    case Style::Plain:
        break;
    }
    return "";
}
} // namespace

std::size_t Stream::columns() const { return kMaxColumns; }

Console::Console()
    : Console(std::make_unique<StandardStream>(STD_OUTPUT_HANDLE), std::make_unique<StandardStream>(STD_ERROR_HANDLE))
{
}

Console::Console(std::unique_ptr<Stream> out, std::unique_ptr<Stream> error)
    : m_out(std::move(out)), m_error(std::move(error))
{
}

void Console::line(std::string_view utf8)
{
    m_out->write(utf8);
    m_out->write("\n");
}

void Console::complain(std::string_view utf8)
{
    m_out->flush();
    m_error->write(std::string(utf8) + "\n");
    m_error->flush();
}

std::size_t Console::columns() const { return std::min(m_out->columns(), kMaxColumns); }

std::string Console::styled(Style style, std::string_view text) const
{
    if (style == Style::Plain || text.empty() || !m_out->hasColours())
        return std::string(text);
    return sequenceOf(style) + std::string(text) + "\x1b[0m";
}
} // namespace autool
