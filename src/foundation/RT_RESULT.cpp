#include "foundation/RT_RESULT.h"

#include "platform/BoundedText.h"
#include "platform/Layout.h"

#include <cstring>
#include <ctime>
#include <exception>
#include <string>

AUT_LAYOUT_BEGIN
template <> struct aut::LayoutOf<RT_RESULT>
{
    static_assert(offsetof(RT_RESULT, m_leadCode) == 8);
    static_assert(offsetof(RT_RESULT, m_statusCode) == 12);
    static_assert(offsetof(RT_RESULT, m_win32Error) == 16);
    static_assert(offsetof(RT_RESULT, m_spareCode) == 20);
    static_assert(offsetof(RT_RESULT, m_date) == 24);
    static_assert(offsetof(RT_RESULT, m_phase) == 32);
    static_assert(offsetof(RT_RESULT, m_action) == 36);
    static_assert(offsetof(RT_RESULT, m_object) == 164);
    static_assert(offsetof(RT_RESULT, m_function) == 424);
    static_assert(offsetof(RT_RESULT, m_argument1) == 552);
    static_assert(offsetof(RT_RESULT, m_argument2) == 812);
    static_assert(sizeof(RT_RESULT) == 1072);
};
AUT_LAYOUT_END

namespace
{
RT_RESULT sharedResult;
}

RT_RESULT* result = &sharedResult;

RT_RESULT::RT_RESULT() : RT_RESULT(0U) {}

RT_RESULT::RT_RESULT(unsigned int phase)
    : m_leadCode(0), m_statusCode(0), m_win32Error(0), m_spareCode(0), m_date(_time64(nullptr)), m_phase(phase),
      m_action(), m_object(), m_function(), m_argument1(), m_argument2()
{
}

// The record has no heap storage: member by member is a full copy.
RT_RESULT::RT_RESULT(const RT_RESULT&) = default;
RT_RESULT& RT_RESULT::operator=(const RT_RESULT&) = default;
RT_RESULT::~RT_RESULT() = default;

int RT_RESULT::GetStatusCode() { return m_statusCode; }

unsigned int RT_RESULT::GetPhase() { return m_phase; }

void RT_RESULT::GetDatetime(__int64* date)
{
    if (date != nullptr)
        *date = m_date;
}

String RT_RESULT::GetAction() { return m_action; }

String RT_RESULT::GetObjectA() { return m_object; }

String RT_RESULT::GetFunction() { return m_function; }

String RT_RESULT::GetArgument1() { return m_argument1; }

String RT_RESULT::GetArgument2() { return m_argument2; }

// The four Set overloads write what they name and deliberately nothing else: a short one on the shared record leaves
// the arguments of an earlier failure in place.

int RT_RESULT::Set(int code, const String& action, const String& function, const String& object)
{
    return Set(code, action, function, 0L, object);
}

int RT_RESULT::Set(int code, const String& action, const String& function, const String& argument1,
                   const String& argument2, const String& object)
{
    return Set(code, action, function, argument1, argument2, 0L, object);
}

int RT_RESULT::Set(int code, const String& action, const String& function, const String& argument1,
                   const String& argument2, long win32, const String& object)
{
    aut::copyText(m_argument1, argument1);
    aut::copyText(m_argument2, argument2);
    return Set(code, action, function, win32, object);
}

int RT_RESULT::Set(int code, const String& action, const String& function, long win32, const String& object)
{
    m_statusCode = code;
    m_win32Error = win32;
    aut::copyText(m_action, action);
    aut::copyText(m_function, function);
    aut::copyText(m_object, object);
    return 1;
}

int RT_RESULT::Set(RT_RESULT* other)
{
    if (other != nullptr)
        *this = *other;
    return 1;
}

int RT_RESULT::IsError()
{
    const int remainder = m_statusCode % 100;
    return remainder >= 50 || (m_statusCode != 0 && remainder == 0) ? 1 : 0;
}

int RT_RESULT::operator==(const RT_RESULT& other)
{
    const bool samePlace = m_phase == other.m_phase && std::strcmp(m_action, other.m_action) == 0 &&
                           std::strcmp(m_object, other.m_object) == 0;
    const bool sameCode = m_statusCode == other.m_statusCode || m_win32Error == other.m_win32Error;
    return samePlace && sameCode ? 1 : 0;
}

String RT_RESULT::GetErrorString()
{
    String line;
    if (IsError())
        line.Format("%d,%d,%ld,%d,%s,%s,%s,%s,%s", m_leadCode, m_statusCode, m_win32Error, static_cast<int>(m_phase),
                    m_action, m_object, m_function, m_argument1, m_argument2);
    return line;
}

int RT_RESULT::GetWin32ErrorMessage(String& out)
{
    String block;
    block.Format("\n\nSystem/Win32 Error:\nError Code=%x\n", static_cast<unsigned int>(m_win32Error));
    out += block;
    return 1;
}

int RT_RESULT::Serialize(std::ofstream& stream)
{
    const auto word = [](const char* text) { return *text != '\0' ? text : "~"; };
    try
    {
        stream << m_date << "\n" << m_phase;
        for (const char* text : {m_action, m_object, m_function, m_argument1, m_argument2})
            stream << "\n" << word(text);
    }
    catch (const std::exception&)
    {
        // Streams are not tested: a caller who made this one throw still finds its failed state.
    }
    return 1;
}

int RT_RESULT::Serialize(std::ifstream& stream)
{
    struct Field
    {
        char* text;
        std::size_t size;
    };
    const Field fields[] = {{m_action, sizeof m_action},
                            {m_object, sizeof m_object},
                            {m_function, sizeof m_function},
                            {m_argument1, sizeof m_argument1},
                            {m_argument2, sizeof m_argument2}};
    try
    {
        stream >> m_date >> m_phase;
        for (const Field& field : fields)
        {
            std::string word;
            stream >> word; // a "~" stays as it is read
            aut::copyText(field.text, field.size, word.c_str());
        }
    }
    catch (const std::exception&)
    {
        // As above.
    }
    return 1;
}
