#include "webconf/CertificateIds.h"

#include "registry/TypedValues.h"

#include <algorithm>
#include <new>

namespace aut
{
namespace
{
constexpr std::size_t kShortestCID = 11;

// Not those of <cctype>: what is a letter must not depend on the caller's locale.
bool isUpper(char c) { return c >= 'A' && c <= 'Z'; }
bool isLower(char c) { return c >= 'a' && c <= 'z'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isOfAlphabet(char c) { return isUpper(c) || isLower(c) || isDigit(c) || c == '+' || c == '/' || c == '='; }

std::string lowerCase(const String& text)
{
    std::string lower(static_cast<const char*>(text));
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return isUpper(c) ? static_cast<char>(c - 'A' + 'a') : c; });
    return lower;
}
} // namespace

bool isWellFormedCID(std::string_view certificateId)
{
    return certificateId.size() >= kShortestCID &&
           std::all_of(certificateId.begin(), certificateId.end(), isOfAlphabet);
}

POSITION findCID(const CIDList& list, const char* certificateId)
{
    for (POSITION next = list.GetHeadPosition(); next != nullptr;)
    {
        const POSITION position = next;
        if (list.GetNext(next) == certificateId)
            return position;
    }
    return nullptr;
}

void appendCID(CIDList& list, const String& certificateId)
{
    if (!appendTo(list, certificateId))
        throw std::bad_alloc();
}

void prependCID(CIDList& list, const String& certificateId)
{
    if (!prependTo(list, certificateId))
        throw std::bad_alloc();
}

std::string joinedCIDs(const CIDList& list)
{
    std::string text;
    for (POSITION position = list.GetHeadPosition(); position != nullptr;)
    {
        if (!text.empty())
            text += ", ";
        text += static_cast<const char*>(list.GetNext(position));
    }
    return text;
}

void assignCIDs(CIDList& list, const CIDList& other)
{
    list.RemoveAll();
    for (POSITION position = other.GetHeadPosition(); position != nullptr;)
        appendCID(list, other.GetNext(position));
}

CIDAppender::CIDAppender(CIDList& list) : m_list(list)
{
    for (POSITION position = list.GetHeadPosition(); position != nullptr;)
        m_known.insert(lowerCase(list.GetNext(position)));
}

bool CIDAppender::append(const String& certificateId)
{
    if (certificateId.IsEmpty() || !m_known.insert(lowerCase(certificateId)).second)
        return false;
    appendCID(m_list, certificateId);
    return true;
}

void dropRepeatedCIDs(CIDList& list)
{
    std::unordered_set<std::string> known;
    for (POSITION next = list.GetHeadPosition(); next != nullptr;)
    {
        const POSITION position = next;
        if (!known.insert(lowerCase(list.GetNext(next))).second)
            list.RemoveAt(position);
    }
}
} // namespace aut
