#ifndef AUTOOLS_FILEOPS_FILEFLAGS_H
#define AUTOOLS_FILEOPS_FILEFLAGS_H

/// When a copy replaces an existing target.
enum WHEN
{
    WHEN_ALWAYS = 0,    ///< without comparing
    WHEN_DIFFERENT = 1, ///< when version, modification time or checksum differ in either direction
    WHEN_NEWER = 2      ///< only when the target is older
};

/// The outcome of one comparison, seen from the other file (the target) against this one (the source).
enum COMPFLAG
{
    COMP_OTHER_NEWER = 0,
    COMP_SAME = 1,
    COMP_OTHER_OLDER = 2
};

#endif
