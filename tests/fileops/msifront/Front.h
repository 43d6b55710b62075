#ifndef AUTOOLS_TESTS_FILEOPS_MSIFRONT_FRONT_H
#define AUTOOLS_TESTS_FILEOPS_MSIFRONT_FRONT_H

#include <windows.h>

#include <oaidl.h>

#include <atomic>

namespace auttest
{
/// What the front of the installer's automation object answers when it is asked for a component's path, and what it
/// saw. The call may come on another thread than the test's, so the test changes this between calls only.
struct MsiFront
{
    HRESULT creation = S_OK;         ///< a failure: no object is made
    HRESULT outcome = S_OK;          ///< a failure: the call fails
    const VARIANT* answer = nullptr; ///< copied as the answer; null: what the real installer knows

    std::atomic<long> objects = 0; ///< alive
    std::atomic<long> created = 0;
    std::atomic<long> calls = 0; ///< for the path of a component
    DISPID id = DISPID_UNKNOWN;  ///< of the last call, like all that follows
    WORD flags = 0;
    unsigned arguments = 0;
    wchar_t product[64] = L"";
    wchar_t component[64] = L"";
};
} // namespace auttest

/// The one record of the loaded DLL, exported under this name.
extern "C" auttest::MsiFront* msiFront();

#endif
