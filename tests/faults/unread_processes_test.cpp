// Processes that a client report cannot look into, or not even see.

#include <gmock/gmock.h>

#include <stdexcept>

#include <linux/capability.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include "faults/faults_fixture.h"
#include "support/other_user.h"
#include "support/own_namespaces.h"
#include "support/small_file_system.h"

namespace {

using QuaskTesting::Command;
using QuaskTesting::OtherUser;
using testing::HasSubstr;

// While it lives, /proc is mounted with this value of hidepid.
class HidingProc
{
public:
    explicit HidingProc(char const* hidepid)
    {
        if (!remount(hidepid)) {
            throw std::runtime_error("cannot mount /proc");
        }
    }
    HidingProc(HidingProc const&) = delete;
    HidingProc& operator=(HidingProc const&) = delete;
    ~HidingProc() { remount("0"); }

private:
    static bool remount(std::string const& hidepid)
    {
        return mount("proc", "/proc", "proc", MS_REMOUNT | MS_NOSUID | MS_NODEV | MS_NOEXEC,
                     ("hidepid=" + hidepid).c_str()) == 0;
    }
};

// There are two other processes: the test's, and process 1 in the test's namespaces.
class UnreadProcesses : public QuaskTesting::FaultsTest
{
protected:
    void SetUp() override
    {
        if (!QuaskTesting::inOwnNamespaces()) {
            GTEST_SKIP() << QuaskTesting::noOwnNamespaces;
        }
        chmod(root.path().c_str(), 0755);
        makeSmall("feed");
    }

    // Of root, where the test's user is root.
    Command withoutPrivileges() const
    {
        Command command = this->command({"-w", "feed"});
        // Any of the three is enough to look into the others on some kernel.
        command.lacking = {CAP_SYS_PTRACE, CAP_SYS_ADMIN, CAP_PERFMON};
        return command;
    }

    static std::string messagesOf(Command command, std::string const& debug)
    {
        command.environment["DOVAN_DEBUG"] = debug;
        std::erase(command.unset, "DOVAN_DEBUG");
        return QuaskTesting::run(command).err;
    }

    // The report is the one on a table without clients.
    void expectNobody(Command const& command) const
    {
        expectFinished(
            QuaskTesting::run(command),
            "Quask table \"" + root.path() +
                "/feed\"\n"
                "Capacity: slots:1024 buckets:1 primary_notifications:0 secondary_notifications:0\n"
                "Occupied slots: 1\nClients: None\n\n",
            "", 0);
    }

    void expectBothAreCounted(Command const& command, std::string const& reason) const
    {
        expectNobody(command);
        EXPECT_EQ(messagesOf(command, "1"),
                  "QuaskScanner 1: QuaskClientScanner: 2 processes could not be looked into\n");
        EXPECT_THAT(
            messagesOf(command, "5"),
            HasSubstr("QuaskScanner 5: file /proc/1/maps cannot be read: " + reason + "\n"));
    }

    void expectNothingIsSaid(Command const& command) const
    {
        expectNobody(command);
        EXPECT_EQ(messagesOf(command, "1"), "");
    }
};

TEST_F(UnreadProcesses, AreCountedWhereRootLacksThePrivilegeToLookIntoThem)
{
    expectBothAreCounted(withoutPrivileges(), "Permission denied");
}

TEST_F(UnreadProcesses, AreCountedWhereProcHidesWhatIsInTheirDirectories)
{
    if (!OtherUser::exists()) {
        GTEST_SKIP() << "the system lets nobody become another user";
    }
    OtherUser const user(QUASK_UNDER_TEST);
    HidingProc const proc("1");
    expectBothAreCounted(user.command(command({"-w", "feed"})), "Operation not permitted");
}

TEST_F(UnreadProcesses, ThatProcDoesNotShowAreNotKnown)
{
    if (!OtherUser::exists()) {
        GTEST_SKIP() << "the system lets nobody become another user";
    }
    OtherUser const user(QUASK_UNDER_TEST);
    HidingProc const proc("2");
    expectNothingIsSaid(user.command(command({"-w", "feed"})));
}

TEST_F(UnreadProcesses, AreNotKnownWhereProcIsEmpty)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizer looks into /proc";
#endif
    QuaskTesting::SmallFileSystem const empty("/proc", 4096);
    expectNothingIsSaid(command({"-w", "feed"}));
}

}  // namespace
