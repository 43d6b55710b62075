#include "fileops/RT_File.h"

#include "fileops/CFileVersion.h"
#include "platform/BoundedText.h"
#include "platform/KernelObjectSecurity.h"
#include "platform/UniqueResource.h"

#include <array>
#include <cstdlib>

namespace
{
constexpr std::size_t kVersionTextSize = 260; // what a caller's buffer for a version text holds

/// Up to five numbers separated by points; what is missing, or stands behind something else, is 0. A number too large
/// becomes the largest.
using VersionParts = std::array<long, 5>;

VersionParts parseVersion(const char* text)
{
    String normalised(text);
    normalised.Replace("A", ",1");
    normalised.Replace("B", ",2");
    normalised.Replace("P", ",3");
    normalised.Replace(" ", "");
    normalised.Replace(",", ".");

    VersionParts parts{};
    const char* at = normalised;
    for (long& part : parts)
    {
        char* end = nullptr;
        part = std::strtol(at, &end, 10);
        if (end == at || *end != '.')
            break;
        at = end + 1;
    }
    return parts;
}

/// -1, 0 or 1 as the sign of `given` minus `own`.
int compareParts(const VersionParts& given, const VersionParts& own)
{
    if (given == own)
        return 0;
    return given < own ? -1 : 1;
}

bool lastWriteTime(const char* path, FILETIME& time)
{
    aut::OpenToEveryone security(false);
    const aut::UniqueFile file(::CreateFileA(path, GENERIC_READ, FILE_SHARE_READ, security.get(), OPEN_EXISTING,
                                             FILE_ATTRIBUTE_NORMAL, nullptr));
    return file && ::GetFileTime(file.get(), nullptr, nullptr, &time);
}

/// The common rule of versions and times: `sign` is that of the other file against this one.
bool differs(long sign, WHEN when, COMPFLAG& flag)
{
    if (sign == 0)
    {
        flag = COMP_SAME;
        return false;
    }
    flag = sign < 0 ? COMP_OTHER_OLDER : COMP_OTHER_NEWER;
    return sign < 0 || when != WHEN_NEWER;
}
} // namespace

bool RT_File::HasVersionInfo(char* versionOut)
{
    String version;
    CFileVersion resource;
    if (resource.Open(m_fullPath))
        version = resource.GetFixedFileVersion();
    if (versionOut != nullptr)
        aut::copyText(versionOut, kVersionTextSize, version);
    return !version.IsEmpty();
}

bool RT_File::VersionCmp(const char* version, int* comparison)
{
    char own[kVersionTextSize];
    if (aut::isEmpty(version) || comparison == nullptr || !HasVersionInfo(own))
        return false;
    const VersionParts ownParts = parseVersion(own);
    *comparison = compareParts(parseVersion(version), ownParts);
    return true;
}

bool RT_File::IsNewerByVersion(RT_File& other)
{
    char version[kVersionTextSize];
    if (!HasVersionInfo(version) || !other.HasVersionInfo(version))
        return true;
    COMPFLAG flag = COMP_SAME;
    return IsDifferentByVersion(other, WHEN_NEWER, flag);
}

bool RT_File::IsDifferentByVersion(RT_File& other, WHEN when, COMPFLAG& flag)
{
    char otherVersion[kVersionTextSize];
    int sign = 0;
    if (!other.HasVersionInfo(otherVersion) || !VersionCmp(otherVersion, &sign))
        return true;
    return differs(sign, when, flag);
}

bool RT_File::IsDifferentByLastModTime(RT_File& other, WHEN when, COMPFLAG& flag)
{
    FILETIME otherTime{};
    FILETIME ownTime{};
    if (!lastWriteTime(other.m_fullPath, otherTime) || !lastWriteTime(m_fullPath, ownTime))
        return true;
    return differs(::CompareFileTime(&otherTime, &ownTime), when, flag);
}

bool RT_File::IsDifferentByCheckSum(RT_File& other)
{
    const unsigned long own = GetCheckSum();
    return own == 0 || own != other.GetCheckSum();
}

bool RT_File::IsDifferent(RT_File& other, WHEN when)
{
    char version[kVersionTextSize];
    COMPFLAG flag = COMP_SAME;
    if (HasVersionInfo(version) && other.HasVersionInfo(version))
    {
        if (IsDifferentByVersion(other, when, flag))
            return true;
        if (flag == COMP_OTHER_NEWER) // only when nothing but newer files is wanted
            return false;
    }
    if (IsDifferentByLastModTime(other, when, flag))
        return true;
    return when == WHEN_DIFFERENT && IsDifferentByCheckSum(other);
}
