#ifndef AUTOOL_COMMON_CONSOLE_H
#define AUTOOL_COMMON_CONSOLE_H

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace autool
{
/// Nobody reads the output any more (`autool log | more`, and more was left).
class OutputClosed : public std::runtime_error
{
public:
    OutputClosed() : std::runtime_error("the output was closed") {}
};

/// Where text goes: one of the process's standard streams, or a test's string.
class Stream
{
public:
    virtual ~Stream() = default;
    /// Throws OutputClosed.
    virtual void write(std::string_view utf8) = 0;
    virtual void flush() {}
    virtual bool isTerminal() const { return false; }
    virtual bool hasColours() const { return false; }
    /// The columns of the terminal; for a file as many as a table may take.
    virtual std::size_t columns() const;
};

constexpr std::size_t kMaxColumns = 100;

enum class Style
{
    Plain,
    Heading,
    Dim,
    Good,
    Warning,
    Bad
};

/// The two streams of the program. Everything written is UTF-8.
class Console
{
public:
    /// The process's own: a terminal gets wide text, whatever its code page is; a file or a pipe gets UTF-8. Colours
    /// only on a terminal that knows them, and not when the environment has NO_COLOR.
    Console();
    Console(std::unique_ptr<Stream> out, std::unique_ptr<Stream> error);

    void print(std::string_view utf8) { m_out->write(utf8); }
    void line(std::string_view utf8 = {});
    /// One line on the error stream, behind what has been printed.
    void complain(std::string_view utf8);
    void flush() { m_out->flush(); }

    Stream& out() { return *m_out; }
    Stream& error() { return *m_error; }
    /// The width that a table may take, at most 100.
    std::size_t columns() const;
    /// `text` in a style: as it is when there are no colours.
    std::string styled(Style style, std::string_view text) const;

private:
    std::unique_ptr<Stream> m_out;
    std::unique_ptr<Stream> m_error;
};
} // namespace autool

#endif
