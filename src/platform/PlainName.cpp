#include "platform/PlainName.h"

#include <windows.h>

namespace aut
{
bool isDevice(const char* path) noexcept
{
    char full[MAX_PATH] = "";
    const DWORD length = ::GetFullPathNameA(path, MAX_PATH, full, nullptr);
    return length < MAX_PATH && std::strncmp(full, "\\\\.\\", 4) == 0;
}

bool isFolderName(const char* name) noexcept
{
    if (!isPlainName(name) || isDevice(name))
        return false;
    const std::size_t length = std::strlen(name);
    return length == 0 || (name[length - 1] != '.' && name[length - 1] != ' ');
}
} // namespace aut
