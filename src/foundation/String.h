#ifndef AUTOOLS_FOUNDATION_STRING_H
#define AUTOOLS_FOUNDATION_STRING_H

#include "foundation/Export.h"

/// The library's own 8-bit string: one heap buffer of exactly length + 1 bytes, and the length.
///
/// The layout is part of the exported interface. The buffer comes from the C runtime's malloc and goes back with
/// free, so a program must share that runtime with the library. An empty string owns no buffer. Copies are deep.
/// Every `const char*` argument may be null, which counts as "". Indexes and lengths are characters (bytes).
/// Comparison and `Find(const char*)` ignore case; character search and `Replace` do not. `Find` folds the letters a to
/// z only, comparison what the C runtime's locale folds, which is the same until the program sets one.
/// Nothing here throws; when memory runs out a new text is empty, an append or a replacement changes nothing. Not
/// thread-safe.
class AUTOOLS_API String
{
public:
    String() noexcept;
    String(const String& other);
    String(const char* text);
    /// One character. No test is made: a NUL gives a string of length 1 whose text reads as "".
    String(char c);
    ~String();

    /// Frees the buffer.
    void Empty();
    bool IsEmpty() const;
    int GetLength() const;

    /// The text, never null.
    operator const char*() const;
    /// The raw buffer: null for an empty string, unlike the conversion.
    char* GetBuffer() const;

    /// The character at `i` (the NUL at the length itself); 0 behind that. `i` must not be negative.
    char GetAt(int i) const;
    /// Stores `c` when `i` is at most the length. `i` must not be negative.
    void SetAt(int i, char c);

    String& operator=(const String& other);
    String& operator=(const char* text);
    String& operator=(char c);

    String& operator+=(const String& other);
    String& operator+=(const char* text);
    /// Appending the NUL character changes nothing.
    String& operator+=(char c);

    /// 1 when equal without regard to case, else 0. A null pointer equals the empty string only.
    int operator==(const String& other) const;
    int operator==(const char* text) const;
    int operator!=(const String& other) const;

    /// Index of the first match at or behind `start`, counted from the beginning, or -1. Ignores case.
    /// A negative start counts as 0; nothing is found in an empty string or for an empty `sub`.
    int Find(const char* sub, int start = 0) const;
    /// The same for one character, with regard to case.
    int Find(char c, int start = 0) const;
    /// Index of the last `c`, or -1.
    int ReverseFind(char c) const;

    /// Replaces every `from` and returns how many there were. Regards case.
    int Replace(char from, char to);
    /// Replaces every `from` and returns the number of places where `from` occurs, overlapping ones counted too:
    /// for a pattern that overlaps itself the number can exceed the replacements made.
    int Replace(const char* from, const char* to);

    /// Removes the run of `c` at the start (at the end).
    void TrimLeft(char c);
    void TrimRight(char c);
    /// Removes blanks (and only those) at both ends.
    void Trim();

    /// The first (last) `n` characters; a negative `n` counts as 0.
    String Left(int n) const;
    String Right(int n) const;
    /// The text from `first` on; the whole text when `first` is below 1.
    String Mid(int first) const;
    /// At most `count` characters from `first`; a negative `first` gives the whole text whatever `count` is.
    String Mid(int first, int count) const;
    /// Field `index`, from 0, of the text split at `sep`; empty when there are not that many fields.
    String ExtractSubString(char sep, int index) const;

    /// Replaces the text by a printf-like formatted one.
    void Format(const char* format, ...) AUTOOLS_PRINTF(2, 3);

    /// Replaces the text by `n` uninitialised characters and a NUL, and returns the writable buffer.
    char* GetBufferSetLength(int n);
    /// Takes over what the caller wrote into the buffer: `n` characters, or up to the first NUL when `n` is -1.
    /// `n` must lie within the buffer; nothing is reallocated.
    void ReleaseBuffer(int n);

private:
    template <typename T> friend struct aut::LayoutOf;

    void Init(const String& other);
    void Init(const char* text);
    void Init(char c);
    void Concatenate(const char* text, int n);

    char* m_buffer;
    int m_length;
};

AUTOOLS_API String operator+(const String& left, const String& right);
AUTOOLS_API String operator+(const String& left, char right);
AUTOOLS_API String operator+(char left, const String& right);

/// Finds `sub` in `s` without regard to the case of the letters a to z, whatever the locale.
/// Returns a pointer into `s`, or null when there is no match or an argument is null.
AUTOOLS_API const char* stristr(const char* s, const char* sub);

#endif
