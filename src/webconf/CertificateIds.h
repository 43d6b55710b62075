#ifndef AUTOOLS_WEBCONF_CERTIFICATEIDS_H
#define AUTOOLS_WEBCONF_CERTIFICATEIDS_H

#include "foundation/RT_List.h"
#include "foundation/String.h"

#include <string>
#include <string_view>
#include <unordered_set>

namespace aut
{
// Lists of certificate IDs as all their sources fill them. Certificate IDs are compared without regard to case.

using CIDList = RT_List<String, String&>;

/// At least 11 characters, each a letter, a digit, "+", "/" or "=".
bool isWellFormedCID(std::string_view certificateId);

/// Null when the list has no such certificate ID.
POSITION findCID(const CIDList& list, const char* certificateId);

/// Add a copy at the end (in front). Both raise bad_alloc also when there is no memory for the text alone: an empty
/// certificate ID in its place would be another identity.
void appendCID(CIDList& list, const String& certificateId);
void prependCID(CIDList& list, const String& certificateId);

/// All of them, joined by ", ".
std::string joinedCIDs(const CIDList& list);

void assignCIDs(CIDList& list, const CIDList& other);

/// Appends to a list what it does not have yet, in a time that does not grow with the list: there may be thousands.
/// Nobody else may change the list meanwhile.
class CIDAppender
{
public:
    explicit CIDAppender(CIDList& list);
    /// False when the list had it already, or it is empty.
    bool append(const String& certificateId);

private:
    CIDList& m_list;
    std::unordered_set<std::string> m_known; ///< in lower case
};

/// Leaves only the first of equal certificate IDs.
void dropRepeatedCIDs(CIDList& list);
} // namespace aut

#endif
