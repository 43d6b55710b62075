#ifndef AUTOOLS_TESTS_FILEOPS_INSTALLERFIXTURE_H
#define AUTOOLS_TESTS_FILEOPS_INSTALLERFIXTURE_H

#include "platform/UniqueResource.h"
#include "tests/fileops/msifront/Front.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace auttest
{
/// One product with one component, known to the Windows Installer of this machine.
inline constexpr char kProductCode[] = "01234567-89AB-CDEF-0123-456789ABCDEF";
inline constexpr char kComponentCode[] = "76543210-BA98-FEDC-3210-FEDCBA987654";
inline constexpr char kInstallerBlock[] =
    "MSI(01234567-89AB-CDEF-0123-456789ABCDEF:76543210-BA98-FEDC-3210-FEDCBA987654)";

/// While a test runs, the machine's installer object is the front of it (see Front.h); afterwards everything is as it
/// was.
class InstallerFixture : public ::testing::Test
{
protected:
    InstallerFixture();
    ~InstallerFixture() override;

    /// Tells the installer that the component's key file is `path`, which should exist.
    void install(const std::string& path);
    /// Puts another server, or none for "", in the front's place.
    void registerServer(const std::string& path);
    /// The front, in the apartment of the real object or in any other.
    void registerFront(const char* threadingModel = "Apartment");
    MsiFront& front() { return *m_front; }

private:
    aut::UniqueModule m_library;
    MsiFront* m_front = nullptr;
    std::optional<std::string> m_server; ///< as they were before
    std::optional<std::string> m_threadingModel;
};
} // namespace auttest

#endif
