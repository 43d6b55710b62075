#ifndef AUTOOLS_FOUNDATION_EVENTLOG_H
#define AUTOOLS_FOUNDATION_EVENTLOG_H

#include "foundation/Export.h"

/// Writes one event to the log file "7xAutoupdateLog.xml".
///
/// @param code    Low 16 bits: event type (0 information, 1 warning, 2 error, 3 to 11 phases and reports). High 16
///                bits: detail level; 0 is always written, a higher one only when the `TestEnv` registry value is at
///                least the level.
/// @param format  printf-like. At most 1,023 characters of the message are kept.
///
/// Logging never fails visibly, never throws and leaves GetLastError() as it was. May be called from several threads
/// and processes at once: while another process writes, an event waits for up to two seconds and is lost after that.
/// Readers of the file never get in the way.
///
/// The file is a whole XML document after each event, whenever a process dies. One that was damaged from outside, so
/// that it does not end in its closing tag, loses nothing: events go on behind what is there.
AUTOOLS_API void Log(unsigned long code, const char* format, ...) AUTOOLS_PRINTF(2, 3);

/// Moves the machine-wide log file aside under a name made of the current local time. Reports nothing.
AUTOOLS_API void ArchiveCurrentLog(void);

#endif
