#include "fileops/PathSplitting.h"

#include <cstddef>

namespace aut
{
void cleanPath(String& path)
{
    String clean;
    char* const out = clean.GetBufferSetLength(path.GetLength());
    if (out == nullptr)
    {
        path.Empty();
        return;
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
        cleanPath(rest);
        drive = whole.Left(2);
        server.Empty();
        path = rest;
        return true;
    }
    if (colon != -1 || !isSharePath(whole))
        return false;

    cleanPath(whole);
    const int end = whole.Find('\\');
    String rest;
    if (end != -1)
    {
        rest = whole.Mid(end + 1);
        cleanPath(rest);
        whole = whole.Left(end);
    }
    drive.Empty();
    server = String("\\\\") + whole;
    path = rest;
    return true;
}

void splitLastComponent(String& path, String& name)
{
    const int last = path.ReverseFind('\\');
    name = path.Mid(last + 1);
    path = last == -1 ? String() : path.Left(last);
}

void joinPath(const String& drive, const String& server, String& path, const String& name, String& fullPath)
{
    const String& root = drive.IsEmpty() ? server : drive;
    fullPath = root;
    if (!path.IsEmpty())
    {
        fullPath += '\\';
        fullPath += path;
    }
    if (path.IsEmpty() && name.IsEmpty())
        return;
    path = fullPath;
    if (!name.IsEmpty())
    {
        fullPath += '\\';
        fullPath += name;
    }
}
} // namespace aut
