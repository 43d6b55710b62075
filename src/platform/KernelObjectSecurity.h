#ifndef AUTOOLS_PLATFORM_KERNELOBJECTSECURITY_H
#define AUTOOLS_PLATFORM_KERNELOBJECTSECURITY_H

#include <windows.h>

namespace aut
{
/// Fills a descriptor with a null access list and attributes that point to it.
///
/// The service runs as a system account, its user interface and tools as whoever is logged on. All of them open the
/// same events, mappings and files, so these are created without an access list: a missing list (unlike an empty one)
/// grants everyone every access.
inline bool makeOpenToEveryone(SECURITY_DESCRIPTOR& descriptor, SECURITY_ATTRIBUTES& attributes, bool inheritable)
{
    attributes.nLength = sizeof attributes;
    attributes.bInheritHandle = inheritable ? TRUE : FALSE;
    attributes.lpSecurityDescriptor = &descriptor;
    return ::InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION) != FALSE &&
           ::SetSecurityDescriptorDacl(&descriptor, TRUE, nullptr, FALSE) != FALSE;
}

/// The same as one local object.
class OpenToEveryone
{
public:
    explicit OpenToEveryone(bool inheritable) { makeOpenToEveryone(m_descriptor, m_attributes, inheritable); }
    OpenToEveryone(const OpenToEveryone&) = delete;
    OpenToEveryone& operator=(const OpenToEveryone&) = delete;
    SECURITY_ATTRIBUTES* get() { return &m_attributes; }

private:
    SECURITY_DESCRIPTOR m_descriptor{};
    SECURITY_ATTRIBUTES m_attributes{};
};
} // namespace aut

#endif
