#ifndef AUTOOLS_UPDATECYCLE_EXITCODES_H
#define AUTOOLS_UPDATECYCLE_EXITCODES_H

namespace updatecycle
{
/// What the program ends with. One number per thing that somebody would do something different about.
enum ExitCode
{
    kDone = 0,            ///< every release is as the server wants it, or waits for its time
    kUnexpected = 1,      ///< an error of the XML parser or of the system that has no number of its own
    kBadUsage = 2,        ///< the command line was not understood
    kNoSettings = 3,      ///< no server, data folder or certificate ID known, or they cannot be stored
    kNoAnswer = 4,        ///< a product list did not come: server down, refused, cut off, empty; the rest went on
    kBadAnswer = 5,       ///< what came is no well-formed product list; the rest went on
    kRecordsNotSaved = 6, ///< at least one release record could not be saved
    kReleaseFailed = 7,   ///< at least one release could not be installed or removed; the next cycle tries again
    kRebootNeeded = 8     ///< all done, but a file in use is replaced or removed when Windows starts next
};
} // namespace updatecycle

#endif
