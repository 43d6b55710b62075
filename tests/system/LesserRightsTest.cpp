// Two processes of which one may less: what the library makes is for processes of every account.
#include "system/CAUEvent.h"
#include "system/CInterruptionEvent.h"
#include "system/SharedMemory.h"
#include "tests/support/ClientRegistry.h"
#include "tests/system/Processes.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

using namespace auttest;

namespace
{
/// The group that this process belongs to and the lesser one does not.
class Administrators
{
public:
    Administrators()
    {
        DWORD size = sizeof m_sid;
        EXPECT_TRUE(::CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, m_sid, &size));
    }
    PSID get() { return m_sid; }

private:
    alignas(SID) BYTE m_sid[SECURITY_MAX_SID_SIZE];
};

class LesserRightsTest : public ::testing::Test
{
protected:
    LesserRightsTest()
    {
        SID_AND_ATTRIBUTES group{m_administrators.get(), 0};
        EXPECT_TRUE(::CreateRestrictedToken(tokenOf(::GetCurrentProcess()).get(), DISABLE_MAX_PRIVILEGE, 1, &group, 0,
                                            nullptr, 0, nullptr, m_token.put()))
            << ::GetLastError();
    }
    /// The exit status of the helper, run without the rights of administrators.
    DWORD runWithLesserRights(const std::string& arguments) const
    {
        std::string commandLine = helperProgram() + " " + arguments;
        STARTUPINFOA startup{};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION started{};
        EXPECT_TRUE(::CreateProcessAsUserA(m_token.get(), nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0,
                                           nullptr, nullptr, &startup, &started))
            << ::GetLastError();
        aut::UniqueHandle{started.hThread}.reset();
        const aut::UniqueHandle process{started.hProcess};
        EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(process.get(), 30000));
        DWORD status = ~0UL;
        ::GetExitCodeProcess(process.get(), &status);
        return status;
    }
    /// Leaves the object to administrators alone.
    void keepForAdministrators(HANDLE object)
    {
        alignas(ACL) BYTE list[256];
        auto* const acl = reinterpret_cast<ACL*>(list);
        ASSERT_TRUE(::InitializeAcl(acl, sizeof list, ACL_REVISION));
        ASSERT_TRUE(::AddAccessAllowedAce(acl, ACL_REVISION, GENERIC_ALL | EVENT_ALL_ACCESS, m_administrators.get()));
        SECURITY_DESCRIPTOR descriptor;
        ASSERT_TRUE(::InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION));
        ASSERT_TRUE(::SetSecurityDescriptorDacl(&descriptor, TRUE, acl, FALSE));
        ASSERT_TRUE(::SetKernelObjectSecurity(object, DACL_SECURITY_INFORMATION, &descriptor));
    }

    ClientRegistry m_registry;
    Administrators m_administrators;
    aut::UniqueHandle m_token;
};
} // namespace

TEST_F(LesserRightsTest, TheOtherProcessMayLess)
{
    CAUEvent event;
    ASSERT_EQ(1, event.Create("LesserRightsTest kept"));
    keepForAdministrators(event.GetHandle());
    EXPECT_EQ(0U, runHelper("signal \"LesserRightsTest kept\"").status);
    EXPECT_EQ(1U, runWithLesserRights("signal \"LesserRightsTest kept\""));
}

TEST_F(LesserRightsTest, AnEventIsForEveryone)
{
    CAUEvent event;
    ASSERT_EQ(1, event.Create("LesserRightsTest"));
    EXPECT_EQ(0U, runWithLesserRights("signal LesserRightsTest"));
    EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(event.GetHandle(), 0));
}

TEST_F(LesserRightsTest, AnInterruptionIsForEveryone)
{
    CInterruptionEvent event;
    String name = "Global\\LesserRightsTest interruption";
    ASSERT_EQ(1, event.Create(name));
    EXPECT_EQ(0U, runWithLesserRights("raise \"Global\\LesserRightsTest interruption\""));
    ASSERT_EQ(1, event.StartPooling());
    ASSERT_EQ(1, event.StopPooling());
    EXPECT_EQ(1, event.IsITRaised());
}

TEST_F(LesserRightsTest, SharedMemoryIsForEveryone)
{
    m_registry.write("Config", "ServiceInstalled", 1); // so that sessions share it too
    SharedMemory memory("LesserRightsTest memory");
    auto* const block = static_cast<char*>(memory.Create(64));
    ASSERT_NE(nullptr, block);
    std::strcpy(block, "question");
    EXPECT_EQ(0U, runWithLesserRights("answer \"LesserRightsTest memory\""));
    EXPECT_STREQ("answer", block);
    memory.Close();
}

TEST_F(LesserRightsTest, AnEventThatIsNotForThisProcessFails)
{
    const aut::UniqueHandle others{::CreateEventA(nullptr, FALSE, FALSE, "Global\\LesserRightsTest others")};
    allowOnly(others.get(), SYNCHRONIZE);
    const aut::UniqueHandle interruption{::CreateEventA(nullptr, TRUE, FALSE, "LesserRightsTest others")};
    allowOnly(interruption.get(), SYNCHRONIZE);
    CAUEvent event;
    EXPECT_EQ(0, event.Create("LesserRightsTest others"));
    EXPECT_EQ(nullptr, event.GetHandle());
    CInterruptionEvent interrupted;
    String name = "LesserRightsTest others";
    EXPECT_EQ(0, interrupted.Create(name));
    EXPECT_EQ(nullptr, interrupted.GetEventHandle());
}
