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

/// What happens to a target that is in use. Every value but 1 means "now only".
enum OVERWRITEFLAG
{
    OVERWRITE_NOW_ONLY = 0, ///< the operation fails
    OVERWRITE_AT_REBOOT = 1 ///< Windows carries it out at its next start
};

/// What Windows does with a file at its next start.
enum OVERWRITE
{
    OVERWRITE_REPLACE = 0, ///< it takes the target's place
    OVERWRITE_DELETE = 1   ///< it is deleted
};

/// How far a walk over a directory goes. Every value but 1 means "top only".
enum DIRTESTFLAG
{
    DIR_TOP_ONLY = 0, ///< the directory's own files
    DIR_RECURSIVE = 1 ///< its subdirectories, too
};

#endif
