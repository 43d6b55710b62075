#include "fileops/PathSplitting.h"

#include <cstddef>

namespace aut
{
bool cleanPath(String& path)
{
    String clean;
    char* const out = clean.GetBufferSetLength(path.GetLength());
    if (out == nullptr)
    {
        path.Empty();
        return false;
    }
    int length = 0;
    for (const char* in = path; *in != '\0'; ++in)
    {
        // A backslash is kept only between two other characters; the one behind the last of them is taken back below.
        if (*in == '\\' && (length == 0 || out[length - 1] == '\\'))
            continue;
        out[length++] = *in;
    }
    if (length > 0 && out[length - 1] == '\\')
        --length;
    out[length] = '\0';
    path = static_cast<const char*>(out);
    return path.GetLength() == length;
}

namespace
{
bool isSharePath(const String& text)
{
    return text.GetLength() >= 3 && text.GetAt(0) == '\\' && text.GetAt(1) == '\\' && text.GetAt(2) != '\\';
}
} // namespace

bool splitRoot(const char* text, String& drive, String& server, String& path)
{
    String whole(text);
    whole.Replace('/', '\\');

    const int colon = whole.Find(':');
    if (colon == 1)
    {
        String rest = whole.Mid(2);
        if (rest.GetLength() != whole.GetLength() - colon - 1 || !cleanPath(rest))
            return false;
        drive = whole.Left(2);
        server.Empty();
        path = rest;
        return drive.GetLength() == 2 && path.GetLength() == rest.GetLength();
    }
    if (colon != -1 || !isSharePath(whole))
        return false;

    if (!cleanPath(whole))
        return false;
    const int end = whole.Find('\\');
    String rest;
    if (end != -1)
    {
        rest = whole.Mid(end + 1);
        if (rest.GetLength() != whole.GetLength() - end - 1 || !cleanPath(rest))
            return false;
        whole = whole.Left(end);
        if (whole.GetLength() != end)
            return false;
    }
    drive.Empty();
    server = String("\\\\") + whole;
    path = rest;
    return server.GetLength() == whole.GetLength() + 2 && path.GetLength() == rest.GetLength();
}

bool splitLastComponent(String& path, String& name)
{
    const int length = path.GetLength();
    const int last = path.ReverseFind('\\');
    name = path.Mid(last + 1);
    path = last == -1 ? String() : path.Left(last);
    return name.GetLength() == length - last - 1 && path.GetLength() == (last == -1 ? 0 : last);
}

void joinPath(const String& drive, const String& server, String& path, const String& name, String& fullPath)
{
    const String& root = drive.IsEmpty() ? server : drive;
    const int length =
        root.GetLength() + (path.IsEmpty() ? 0 : path.GetLength() + 1) + (name.IsEmpty() ? 0 : name.GetLength() + 1);
    fullPath = root;
    if (!path.IsEmpty())
    {
        fullPath += '\\';
        fullPath += path;
    }
    if (path.IsEmpty() && name.IsEmpty())
        return;
    path = fullPath;
    const bool isWhole = path.GetLength() == fullPath.GetLength();
    if (!name.IsEmpty())
    {
        fullPath += '\\';
        fullPath += name;
    }
    if (!isWhole || fullPath.GetLength() != length)
    {
        path.Empty();
        fullPath.Empty();
    }
}
} // namespace aut
