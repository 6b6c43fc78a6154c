#include "base/termination.h"

#include <gtest/gtest.h>

#include <csignal>

#include <sched.h>
#include <unistd.h>

#include "support/forked.h"

namespace {

using QuaskTesting::endOf;
using QuaskTesting::Forked;
namespace Termination = Dovan::Termination;

// Never ends by itself.
int waitForEver()
{
    for (;;) {
        pause();
    }
}

TEST(Termination, ASignalEndsTheProcessWhenItsOutputIsComplete)
{
    for (int const number : {SIGHUP, SIGINT, SIGTERM}) {
        EXPECT_EQ(endOf([number] {
                      Termination::prepare([] { return true; });
                      raise(number);
                      return 0;
                  }),
                  -number);
    }
}

TEST(Termination, ASignalThatIsPutOffEndsTheProcessWhereItIsDue)
{
    for (bool const asked : {false, true}) {
        EXPECT_EQ(endOf([asked] {
                      Termination::prepare([] { return false; });
                      raise(SIGTERM);
                      if (asked) {
                          Termination::endIfDue();
                      }
                      return 7;
                  }),
                  asked ? -SIGTERM : 7);
    }
}

TEST(Termination, NothingIsDueWithoutASignal)
{
    EXPECT_EQ(endOf([] {
                  Termination::prepare([] { return false; });
                  Termination::endIfDue();
                  return 7;
              }),
              7);
}

TEST(Termination, ASignalThatIsPutOffEndsTheProcessWhereverItIsAfterASecond)
{
    EXPECT_EQ(endOf([] {
                  Termination::prepare([] { return false; });
                  raise(SIGHUP);
                  return waitForEver();
              }),
              -SIGHUP);
}

TEST(Termination, AnOutputThatCannotBeCompletedIsGivenUpAfterASecond)
{
    EXPECT_EQ(endOf([] {
                  Termination::prepare([] { return waitForEver() == 0; });
                  raise(SIGTERM);
                  return 0;
              }),
              -SIGTERM);
}

TEST(Termination, ASecondSignalEndsTheProcessAtOnce)
{
    EXPECT_EQ(endOf([] {
                  Termination::prepare([] { return raise(SIGINT) != 0 || waitForEver() == 0; });
                  raise(SIGTERM);
                  return 0;
              }),
              -SIGINT);
    EXPECT_EQ(endOf([] {
                  Termination::prepare([] { return false; });
                  raise(SIGTERM);
                  raise(SIGTERM);
                  return 0;
              }),
              -SIGTERM);
}

// While the output is being completed, which may take long.
TEST(Termination, TheSameSignalASecondTimeEndsTheProcessAtOnceToo)
{
    EXPECT_EQ(endOf([] {
                  Termination::prepare([]() -> bool {
                      raise(SIGINT);
                      _exit(7);
                  });
                  raise(SIGINT);
                  return 0;
              }),
              -SIGINT);
}

TEST(Termination, AnIgnoredSignalStaysIgnored)
{
    EXPECT_EQ(endOf([] {
                  static_cast<void>(std::signal(SIGHUP, SIG_IGN));
                  Termination::prepare([] { return true; });
                  raise(SIGHUP);
                  return 7;
              }),
              7);
}

TEST(Termination, AnErrorNumberIsTheSameAfterASignalThatIsPutOff)
{
    EXPECT_EQ(endOf([] {
                  Termination::prepare([] { return close(-1) == 0; });
                  errno = ENOENT;
                  raise(SIGTERM);
                  return errno == ENOENT ? 7 : 1;
              }),
              7);
}

// Signals with their default action do nothing to it.
TEST(Termination, TheFirstProcessOfAContainerEndsToo)
{
    constexpr int notAllowed = 77;
    int const status = endOf([] {
        if (unshare(CLONE_NEWPID) != 0 && unshare(CLONE_NEWUSER | CLONE_NEWPID) != 0) {
            return notAllowed;
        }
        return endOf([] {
            if (getpid() != 1) {
                return 1;
            }
            Termination::prepare([] { return true; });
            raise(SIGTERM);
            return 0;
        });
    });
    if (status == notAllowed) {
        GTEST_SKIP() << "no process namespace may be made here";
    }
    EXPECT_EQ(status, 128 + SIGTERM);
}

}  // namespace
