#include "foundation/String.h"

#include "platform/Layout.h"

#include <windows.h>

#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

AUT_LAYOUT_BEGIN
template <> struct aut::LayoutOf<String>
{
    static_assert(sizeof(String) == 16);
    static_assert(offsetof(String, m_buffer) == 0);
    static_assert(offsetof(String, m_length) == 8);
};
AUT_LAYOUT_END

namespace
{
/// A block of length + 1 bytes with the text and its terminator, null when memory runs out.
char* duplicate(const char* text, int length)
{
    char* const copy = static_cast<char*>(std::malloc(static_cast<std::size_t>(length) + 1));
    if (copy == nullptr)
        return nullptr;
    std::memcpy(copy, text, static_cast<std::size_t>(length));
    copy[length] = '\0';
    return copy;
}

/// A text that an `int` cannot measure is treated like one that memory cannot hold: as empty.
int measure(const char* text)
{
    const std::size_t length = text != nullptr ? std::strlen(text) : 0;
    return length < INT_MAX ? static_cast<int>(length) : 0;
}

int compare(const char* left, const char* right) { return _stricmp(left, right) == 0 ? 1 : 0; }

int atLeastZero(int n) { return n < 0 ? 0 : n; }

String textOf(const char* text, int length)
{
    String part;
    if (length <= 0)
        return part;
    char* const buffer = part.GetBufferSetLength(length);
    if (buffer != nullptr)
        std::memcpy(buffer, text, static_cast<std::size_t>(length));
    return part;
}
} // namespace

String::String() noexcept : m_buffer(nullptr), m_length(0) {}

String::String(const String& other) : m_buffer(nullptr), m_length(0) { Init(other); }

String::String(const char* text) : m_buffer(nullptr), m_length(0) { Init(text); }

String::String(char c) : m_buffer(nullptr), m_length(0) { Init(c); }

String::~String() { Empty(); }

// The Init overloads duplicate before they free, so that a source inside this string's own buffer stays readable.

void String::Init(const String& other)
{
    char* copy = nullptr;
    const int length = other.m_buffer != nullptr ? other.m_length : 0;
    if (length > 0)
        copy = duplicate(other.m_buffer, length);
    Empty();
    m_buffer = copy;
    m_length = copy != nullptr ? length : 0;
}

void String::Init(const char* text)
{
    char* copy = nullptr;
    const int length = measure(text);
    if (length > 0)
        copy = duplicate(text, length);
    Empty();
    m_buffer = copy;
    m_length = copy != nullptr ? length : 0;
}

void String::Init(char c)
{
    Empty();
    m_buffer = duplicate(&c, 1);
    m_length = m_buffer != nullptr ? 1 : 0;
}

void String::Empty()
{
    if (m_buffer == nullptr)
        return;
    std::free(m_buffer);
    m_buffer = nullptr;
    m_length = 0;
}

bool String::IsEmpty() const { return m_length == 0; }

int String::GetLength() const { return m_length; }

String::operator const char*() const { return m_length != 0 ? m_buffer : ""; }

char* String::GetBuffer() const { return m_buffer; }

char String::GetAt(int i) const { return i <= m_length && m_buffer != nullptr ? m_buffer[i] : '\0'; }

void String::SetAt(int i, char c)
{
    if (i <= m_length && m_buffer != nullptr)
        m_buffer[i] = c;
}

String& String::operator=(const String& other)
{
    if (this != &other)
        Init(other);
    return *this;
}

String& String::operator=(const char* text)
{
    Init(text);
    return *this;
}

String& String::operator=(char c)
{
    Init(c);
    return *this;
}

String& String::operator+=(const String& other)
{
    if (other.m_length == 0)
        return *this;
    if (m_length == 0)
        Init(other);
    else
        Concatenate(other.m_buffer, other.m_length);
    return *this;
}

String& String::operator+=(const char* text)
{
    const int length = measure(text);
    if (length == 0)
        return *this;
    if (m_length == 0)
        Init(text);
    else
        Concatenate(text, length);
    return *this;
}

String& String::operator+=(char c)
{
    if (c == '\0')
        return *this;
    if (m_length == 0)
        Init(c);
    else
        Concatenate(&c, 1);
    return *this;
}

void String::Concatenate(const char* text, int n)
{
    if (n > INT_MAX - 1 - m_length)
        return;
    // The text may lie in the buffer that realloc is about to move.
    const bool own = text >= m_buffer && text <= m_buffer + m_length;
    const std::ptrdiff_t offset = own ? text - m_buffer : 0;
    char* const grown = static_cast<char*>(
        std::realloc(m_buffer, static_cast<std::size_t>(m_length) + 1U + static_cast<std::size_t>(n)));
    if (grown == nullptr)
        return;
    std::memcpy(grown + m_length, own ? grown + offset : text, static_cast<std::size_t>(n));
    m_buffer = grown;
    m_length += n;
    m_buffer[m_length] = '\0';
}

int String::operator==(const String& other) const
{
    if (m_length == 0 && other.m_length == 0)
        return 1;
    return m_length == other.m_length ? compare(*this, other) : 0;
}

int String::operator==(const char* text) const
{
    if (text == nullptr)
        return m_length == 0 ? 1 : 0;
    return static_cast<std::size_t>(m_length) == std::strlen(text) ? compare(*this, text) : 0;
}

int String::operator!=(const String& other) const { return *this == other ? 0 : 1; }

String operator+(const String& left, const String& right)
{
    String sum(left);
    sum += right;
    return sum;
}

String operator+(const String& left, char right)
{
    String sum(left);
    sum += right;
    return sum;
}

String operator+(char left, const String& right)
{
    String sum(left);
    sum += right;
    return sum;
}

int String::Find(const char* sub, int start) const
{
    const int from = atLeastZero(start); // first: an empty string has no buffer, wherever the search begins
    if (sub == nullptr || *sub == '\0' || from >= m_length)
        return -1;
    const char* const match = stristr(m_buffer + from, sub);
    return match != nullptr ? static_cast<int>(match - m_buffer) : -1;
}

int String::Find(char c, int start) const
{
    const int from = atLeastZero(start);
    if (c == '\0' || from >= m_length)
        return -1;
    const char* const match = std::strchr(m_buffer + from, c);
    return match != nullptr ? static_cast<int>(match - m_buffer) : -1;
}

int String::ReverseFind(char c) const
{
    if (m_length == 0)
        return -1;
    const char* const match = std::strrchr(m_buffer, c);
    return match != nullptr ? static_cast<int>(match - m_buffer) : -1;
}

void String::TrimLeft(char c)
{
    int count = 0;
    while (count < m_length && m_buffer[count] == c)
        ++count;
    if (count > 0)
        *this = Right(m_length - count);
}

void String::TrimRight(char c)
{
    int length = m_length;
    while (length > 0 && m_buffer[length - 1] == c)
        --length;
    if (length < m_length)
        *this = Left(length);
}

void String::Trim()
{
    TrimLeft(' ');
    TrimRight(' ');
}

String String::Left(int n) const { return n < m_length ? textOf(m_buffer, n) : *this; }

String String::Right(int n) const
{
    const int kept = atLeastZero(n);
    return kept < m_length ? textOf(m_buffer + m_length - kept, kept) : *this;
}

String String::Mid(int first) const
{
    if (first < 1)
        return *this;
    return first <= m_length ? textOf(m_buffer + first, m_length - first) : String();
}

String String::Mid(int first, int count) const
{
    if (count < 0)
        return String();
    if (first < 0)
        return *this; // deliberately not clamped, whatever the count
    if (first >= m_length)
        return String();
    return count < m_length - first ? textOf(m_buffer + first, count) : Mid(first);
}

String String::ExtractSubString(char sep, int index) const
{
    int pos = Find(sep, 0);
    int begin = 0;
    int passed = 0;
    while (passed < index)
    {
        if (begin >= m_length)
            break;
        if (pos < 0)
        {
            pos = m_length;
            break;
        }
        begin = pos + 1;
        pos = Find(sep, begin);
        ++passed;
    }
    if (passed < index)
        return String();
    return pos >= 0 ? Mid(begin, pos - begin) : Mid(begin, m_length - begin);
}

void String::Format(const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    std::va_list measuring;
    va_copy(measuring, arguments);
    const int length = format != nullptr ? std::vsnprintf(nullptr, 0, format, measuring) : 0;
    va_end(measuring);

    // Written before the old text goes: the arguments may point into it.
    String formatted;
    if (length > 0 && formatted.GetBufferSetLength(length) != nullptr)
        std::vsnprintf(formatted.m_buffer, static_cast<std::size_t>(length) + 1, format, arguments);
    va_end(arguments);
    *this = static_cast<const char*>(formatted);
}

char* String::GetBufferSetLength(int n)
{
    Empty();
    const int length = atLeastZero(n);
    m_buffer = static_cast<char*>(std::malloc(static_cast<std::size_t>(length) + 1));
    if (m_buffer == nullptr)
        return nullptr;
    m_buffer[length] = '\0';
    m_length = length;
    return m_buffer;
}

void String::ReleaseBuffer(int n)
{
    if (m_buffer == nullptr)
        return;
    m_length = n == -1 ? ::lstrlenA(m_buffer) : atLeastZero(n);
    m_buffer[m_length] = '\0';
}
