#include "platform/UniqueResource.h"
#include "system/CProcessListManager.h"

namespace
{
constexpr DWORD kAccountNameChars = 260;

struct HeapBlockTraits
{
    using Type = void*;
    static Type none() noexcept { return nullptr; }
    static void close(Type block) noexcept { ::HeapFree(::GetProcessHeap(), 0, block); }
};
using UniqueHeapBlock = aut::UniqueResource<HeapBlockTraits>;

UniqueHeapBlock readTokenUser(HANDLE token)
{
    DWORD size = 0;
    if (::GetTokenInformation(token, TokenUser, nullptr, 0, &size) || ::GetLastError() != ERROR_INSUFFICIENT_BUFFER)
        return {};
    UniqueHeapBlock block{::HeapAlloc(::GetProcessHeap(), 0, size)};
    if (block && !::GetTokenInformation(token, TokenUser, block.get(), size, &size))
        return {};
    return block;
}
} // namespace

int CProcessListManager::GetUserNameFromPID(unsigned long pid, String& user)
{
    user.Empty();
    if (pid == 0)
        return 0;
    const aut::UniqueHandle process{::OpenProcess(PROCESS_QUERY_INFORMATION, FALSE, pid)};
    aut::UniqueHandle token;
    if (!process || !::OpenProcessToken(process.get(), TOKEN_QUERY, token.put()))
        return 0;
    const UniqueHeapBlock tokenUser = readTokenUser(token.get());
    if (!tokenUser)
        return 0;

    char name[kAccountNameChars] = "";
    char domain[kAccountNameChars] = "";
    DWORD nameSize = kAccountNameChars;
    DWORD domainSize = kAccountNameChars;
    SID_NAME_USE use{};
    if (!::LookupAccountSidA(nullptr, static_cast<const TOKEN_USER*>(tokenUser.get())->User.Sid, name, &nameSize,
                             domain, &domainSize, &use))
        return 0;
    user.Format("%s\\%s", domain, name);
    return 1;
}
