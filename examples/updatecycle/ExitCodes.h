#ifndef AUTOOLS_UPDATECYCLE_EXITCODES_H
#define AUTOOLS_UPDATECYCLE_EXITCODES_H

namespace updatecycle
{
/// What the program ends with. One number per thing that somebody would do something different about.
enum ExitCode
{
    kDone = 0,
    kUnexpected = 1,     ///< an error of the XML parser or of the system that has no number of its own
    kBadUsage = 2,       ///< the command line was not understood
    kNoSettings = 3,     ///< no server or data folder known, or they cannot be stored
    kNoAnswer = 4,       ///< no product list came: server down, refused, cut off, empty
    kBadAnswer = 5,      ///< what came is no well-formed product list
    kRecordsNotSaved = 6 ///< at least one release record could not be saved
};
} // namespace updatecycle

#endif
