#ifndef AUTOOLS_FILETRANSFER_URL_H
#define AUTOOLS_FILETRANSFER_URL_H

#include <string>
#include <string_view>

namespace filetransfer
{
enum class Scheme
{
    http,
    https,
    ftp,
    file
};

/// A URL taken apart, ready for the calls that use its pieces.
struct Url
{
    Scheme scheme = Scheme::http;
    std::string host; ///< as written: an IPv6 address in brackets
    unsigned short port = 0;
    /// http and https: path and query, escaped, beginning with "/". ftp: the path below the log-on folder, plain.
    /// file: the path of the file, plain, with backslashes.
    std::string object;
    std::string user;
    std::string password;

    /// The host as a resolver takes it, without brackets.
    std::string hostName() const;
    /// An http or https URL again as one text, without the user.
    std::string text() const;
};

/// Takes `text` apart. @return 0, kUnsupportedScheme or ERROR_INTERNET_INVALID_URL. Backslashes before the query count
/// as slashes. A fragment ("#...") is dropped, for ftp and file the query ("?...") too: it is no part of a file's name.
[[nodiscard]] int parseUrl(std::string_view text, Url& url);
} // namespace filetransfer

#endif
