#ifndef AUTOOLS_FILETRANSFER_HTTPHEAD_H
#define AUTOOLS_FILETRANSFER_HTTPHEAD_H

#include "filetransfer/Url.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace filetransfer
{
/// What the head of an answer says about its body.
struct HttpHead
{
    std::uint32_t status = 0; ///< 0: no HTTP answer, or one that contradicts itself
    bool chunked = false;
    bool asksBasic = false; ///< a log-on of the Basic kind
    std::optional<std::uint64_t> length;
};

/// True once `text` ends with the empty line that ends a head.
bool endsHead(std::string_view text) noexcept;
/// False leaves `head.status` at 0.
bool parseHead(std::string_view text, HttpHead& head);
/// Digits only, as in a Content-Length.
bool parseLength(std::string_view text, std::uint64_t& length) noexcept;

/// The request of a GET whose connection ends with its answer.
std::string directRequest(const Url& url, bool pastCaches, bool logOn);
} // namespace filetransfer

#endif
