#ifndef AUTOOLS_FOUNDATION_RT_RESULT_H
#define AUTOOLS_FOUNDATION_RT_RESULT_H

#include "foundation/Export.h"
#include "foundation/String.h"

#include <fstream>

/// The details of an operation's outcome: codes, phase, date, action, object, function and two arguments.
///
/// The layout is part of the exported interface; all texts are fixed buffers inside the record. No member fails:
/// texts longer than their buffers are cut. The shared record `result` is not locked.
class AUTOOLS_API RT_RESULT
{
public:
    RT_RESULT();
    RT_RESULT(unsigned int phase);
    RT_RESULT(const RT_RESULT& other);
    RT_RESULT& operator=(const RT_RESULT& other);
    virtual ~RT_RESULT();

    int GetStatusCode();
    unsigned int GetPhase();
    /// Stores the date (seconds since 1970) through the pointer, which may be null.
    void GetDatetime(__int64* date);
    String GetAction();
    String GetObjectA();
    String GetFunction();
    String GetArgument1();
    String GetArgument2();

    /// Each stores the code and the texts it names and returns 1. Without a `win32` argument the system error
    /// becomes 0. Members that an overload does not name keep what an earlier failure left there: the date and the
    /// phase always, the two arguments in the overloads without them.
    int Set(int code, const String& action, const String& function, const String& object);
    int Set(int code, const String& action, const String& function, const String& argument1, const String& argument2,
            const String& object);
    int Set(int code, const String& action, const String& function, const String& argument1, const String& argument2,
            long win32, const String& object);
    int Set(int code, const String& action, const String& function, long win32, const String& object);
    /// Copies everything from `other`.
    int Set(RT_RESULT* other);

    /// 1 when the status code's last two digits are 50 to 99, or when it is a non-zero multiple of 100.
    int IsError();
    /// 1 when phase, action and object are the same (with regard to case) and so is the status code or the system
    /// error.
    int operator==(const RT_RESULT& other);

    /// One comma-separated line of all fields; "" unless this is an error.
    String GetErrorString();
    /// A readable message. The argument is ignored. The action is used as a printf format in which only plain %s
    /// takes the object and the arguments.
    String GetErrorMessage(const char* ignored);
    /// Appends the system error's code, in lower-case hexadecimal, to `out`; returns 1.
    int GetWin32ErrorMessage(String& out);

    /// Write and read the stored form: date, phase, action, object, function and arguments, one a line. The codes
    /// are not stored. An empty text is stored as "~", which is read back as it stands; texts are stored without
    /// escaping, so that one with a blank does not survive. Both return 1.
    int Serialize(std::ofstream& stream);
    int Serialize(std::ifstream& stream);

    /// A code of the caller's own: no member sets it, but it is copied, and `GetErrorString` prints it first.
    int m_leadCode;

private:
    template <typename T> friend struct aut::LayoutOf;

    int m_statusCode;
    long m_win32Error;
    int m_spareCode;
    __int64 m_date;
    unsigned int m_phase;
    char m_action[128];
    char m_object[260];
    char m_function[128];
    char m_argument1[260];
    char m_argument2[260];
};

/// The one shared record in which the library's operations leave the details of their last failure. It is never
/// reset, only overwritten.
extern AUTOOLS_API RT_RESULT* result;

#endif
