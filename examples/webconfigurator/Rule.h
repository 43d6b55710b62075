#ifndef AUTOOLS_WEBCONFIGURATOR_RULE_H
#define AUTOOLS_WEBCONFIGURATOR_RULE_H

#include "webconfigurator/HttpRequest.h"

#include <chrono>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace webconf_sample
{
enum class Framing
{
    length,        ///< a Content-Length
    chunked,       ///< in chunks, to a client that speaks HTTP/1.1
    alwaysChunked, ///< in chunks, to any client
    untilClose     ///< neither: the end of the connection ends the body
};

/// How a request is answered. What is not stated is left to the next rule that fits, and in the end to the defaults:
/// status 200, "text/xml", a true Content-Length, at once.
struct Answer
{
    std::optional<std::string> file; ///< template in the server's folder; states `body` too
    std::optional<std::string> body; ///< as it is
    std::optional<int> status;
    std::optional<std::string> type;     ///< Content-Type
    std::optional<std::string> location; ///< Location; with status 302 unless another one is stated
    std::optional<std::string> headers;  ///< further header lines, each ending in CR LF
    std::optional<Framing> framing;
    std::optional<bool> close; ///< close the connection behind the answer, and say so

    // Faults.
    std::optional<std::chrono::milliseconds> delay;      ///< before the answer
    std::optional<std::chrono::milliseconds> pieceDelay; ///< before each piece of `piece` bytes of the body
    std::optional<std::size_t> piece;                    ///< 1,024 unless stated
    std::optional<long long> lie;                        ///< added to the Content-Length
    std::optional<std::size_t> cut;                      ///< the connection is closed after so many bytes of the body
    std::optional<std::size_t> stall; ///< nothing more comes after so many bytes of the body, and nothing is closed
    std::optional<bool> silent;       ///< the request is read and never answered
    std::optional<bool> hangUp;       ///< the connection is closed without an answer
    std::optional<bool> reset;        ///< what is cut or hung up ends with a reset
    std::optional<std::string> raw;   ///< these bytes instead of an HTTP answer, then the connection is closed

    /// Takes from `other` what is not stated here.
    void completeFrom(const Answer& other);
};

/// An answer and the requests that it is for. Empty conditions fit every request.
struct Rule
{
    std::string page; ///< last part of the path, in any case
    std::string path; ///< the whole path, in any case
    std::map<std::string, std::string> query;
    std::pair<std::string, std::string> header; ///< a header's name and its value; an empty value: it is absent
    int times = -1;                             ///< how many requests it serves; -1: all
    Answer answer;

    bool fits(const HttpRequest& request) const;
};

/// Reads the text form of a rule, settings separated by ",":
///
///     page=wcfgGetProductList.asp, query.CertificateID=AAA, file=product-list.xml, delay=2000, times=1
///
/// Settings: page, path, query.NAME, times, file, body, status, type, location, framing (length, chunked,
/// always-chunked, until-close), and close, delay (ms), piece-delay (ms), piece, lie, cut, stall, silent, hang-up,
/// reset as in Answer; switches are 0 or 1. "%2C" in a value is a comma. Throws std::invalid_argument.
Rule parseRule(std::string_view text);

/// One rule a line; empty lines and lines that begin with "#" are skipped. Throws std::invalid_argument with the line.
std::vector<Rule> parseRules(std::string_view text);
} // namespace webconf_sample

#endif
