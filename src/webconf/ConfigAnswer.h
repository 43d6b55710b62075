#ifndef AUTOOLS_WEBCONF_CONFIGANSWER_H
#define AUTOOLS_WEBCONF_CONFIGANSWER_H

#include "foundation/String.h"
#include "webconf/DataExchange.h"

namespace aut
{
inline constexpr char kClientProduct[] = "Automatic Update";
/// Stored as time stamp: the next request asks for everything.
inline constexpr char kNothingInCache[] = "Nothing In Cache.";
/// The same on the wire.
inline constexpr char kOldestTimeStamp[] = "1980-01-01 00:00:00";

/// What an answer of the Web Configurator means for the cache.
struct AnswerVerdict
{
    int error = 0;     ///< non-zero: there is no answer to speak of
    bool save = false; ///< the answer becomes the cache file
    bool setsTimeStamp = false;
    String timeStamp;
};

/// Judges an answer and logs what it is. `prefix` names the request. An XML call that fails raises `_com_error`.
AnswerVerdict judgeAnswer(const DataExchange& request, const char* prefix, const String& answer);

/// Whether a cached answer is well-formed and no error answer; logged when not.
bool isCachedAnswerValid(const String& answer);
} // namespace aut

#endif
