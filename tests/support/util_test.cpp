#include "support/util.h"

#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/endless_command_line.h"
#include "support/forked.h"
#include "support/pipe.h"
#include "support/recording_handler.h"

namespace {

namespace Util = Quask::Util;

TEST(Hash, IsFnv1aOfThirtyTwoBits)
{
    EXPECT_EQ(Util::hash("", 0), 0x811c9dc5u);
    EXPECT_EQ(Util::hash("a", 1), 0xe40c292cu);
    EXPECT_EQ(Util::hash("foobar", 6), 0xbf9cf968u);
    EXPECT_EQ(Util::hash("\xff", 1), (0x811c9dc5u ^ 0xffu) * 16777619u);
}

TEST(DecodeMagic, ShowsTheBytesInFileOrder)
{
    EXPECT_EQ(Util::decodeMagic(0x544b424b53415551), "QUASKBKT");
}

TEST(DecodeMagic, ShowsAByteThatIsNotPrintableAsADot)
{
    EXPECT_EQ(Util::decodeMagic(0), "........");
    EXPECT_EQ(Util::decodeMagic(0x7f7e201f22ff0a41), "A..\". ~.");
    EXPECT_EQ(Util::decodeMagic(0x7f7e201f22ff0a41).size(), 8u);
}

TEST(DecodeOrvik, ThePidIsTheLowHalfAndTheInstanceTheHighHalf)
{
    unsigned short pid = 0;
    unsigned short instanceId = 0;
    Util::decodeOrvik(463463, pid, instanceId);
    EXPECT_EQ(pid, 4711);
    EXPECT_EQ(instanceId, 7);
    Util::decodeOrvik(0xfffe0001, pid, instanceId);
    EXPECT_EQ(pid, 1);
    EXPECT_EQ(instanceId, 0xfffe);
}

TEST(IsQuaskFile, AcceptsTheFourMappedFilesAndNothingElse)
{
    QuaskTesting::RecordingHandler handler;
    for (char const* const name : {"buckets", "slots", "vandral.1", "vandral.2"}) {
        EXPECT_TRUE(Util::isQuaskFile(handler, name)) << name;
    }
    for (char const* const name : {"", "orvik", "vandral", "vandral.3", "Slots", "slots ",
                                   "slots.1", "buckets~", "bucket"}) {
        EXPECT_FALSE(Util::isQuaskFile(handler, name)) << name;
    }
}

TEST(ReadToEnd, GivesWhatIsLeftOfAFileButNoMoreThanAskedFor)
{
    int const file = memfd_create("text", MFD_CLOEXEC);
    std::string const text = "x" + std::string(10'000, 'y') + "z";
    ASSERT_EQ(write(file, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    auto const from = [file](off_t offset, std::size_t most) {
        lseek(file, offset, SEEK_SET);
        return Util::readToEnd(file, most);
    };
    EXPECT_EQ(from(0, 1'000'000), text);
    EXPECT_EQ(from(5'000, 1'000'000), text.substr(5'000));
    for (std::size_t const most : {0, 1, 4'095, 4'096, 4'097, 10'001, 10'002}) {
        EXPECT_EQ(from(0, most), text.substr(0, most)) << most;
    }
    close(file);
}

class ReadCmdline : public testing::Test
{
protected:
    // The command line that a process started with these arguments shows.
    static std::string of(std::vector<std::string> arguments)
    {
        int ends[2];
        EXPECT_EQ(pipe(ends), 0);
        pid_t const child = fork();
        if (child == 0) {
            dup2(ends[0], STDIN_FILENO);
            close(ends[0]);
            close(ends[1]);
            std::vector<char*> pointers;
            for (std::string& argument : arguments) {
                pointers.push_back(argument.data());
            }
            pointers.push_back(nullptr);
            execv("/bin/sh", pointers.data());
            _exit(127);
        }
        close(ends[0]);
        // Until the shell runs, the process shows this test's own arguments, or none.
        QuaskTesting::RecordingHandler handler;
        std::string own = Util::readCmdline(handler, getpid());
        std::string text = own;
        while (text == own || text.empty()) {
            text = Util::readCmdline(handler, child);
        }
        close(ends[1]);
        EXPECT_EQ(waitpid(child, nullptr, 0), child);
        return text;
    }
};

TEST_F(ReadCmdline, ArgumentsAreSeparatedBySpaces)
{
    EXPECT_EQ(of({"feeder", "-c", "read line"}), "feeder -c read line");
}

TEST_F(ReadCmdline, OnlyTheLastArgumentsEndIsDropped)
{
    EXPECT_EQ(of({"/usr/bin/feeder", "-c", "read line", ""}), "/usr/bin/feeder -c read line ");
    EXPECT_EQ(of({"feeder"}), "feeder");
}

TEST_F(ReadCmdline, IsEmptyWhenTheProcessEndsAfterTheOpening)
{
    pid_t const child = fork();
    if (child == 0) {
        pause();
        _exit(0);
    }
    std::string const path = "/proc/" + std::to_string(child) + "/cmdline";
    int const descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    char byte = 0;
    EXPECT_EQ(read(descriptor, &byte, 1), -1) << "it can still be read: this shows nothing";
    EXPECT_EQ(Util::readToEnd(descriptor, 100), "");
    close(descriptor);
}

TEST_F(ReadCmdline, EndsAfterMoreThanAProgramCanBeStartedWith)
{
    QuaskTesting::Pipe ready;
    QuaskTesting::Forked const child([&ready] {
        bool const shown = QuaskTesting::showEndlessCommandLine(64u << 20);
        bool const isHeard = write(ready.writeEnd(), shown ? "y" : "n", 1) == 1;
        pause();
        return isHeard ? 0 : 1;
    });
    ready.closeWriteEnd();
    if (ready.read() != "y") {
        GTEST_SKIP() << "this kernel lets no process choose its command line";
    }
    QuaskTesting::RecordingHandler handler;
    // The last NUL is dropped, as that of any command line.
    EXPECT_EQ(Util::readCmdline(handler, child.pid()), std::string(Util::longestCmdline - 1, ' '));
}

TEST_F(ReadCmdline, IsEmptyWhenThereIsNoSuchProcess)
{
    pid_t const child = fork();
    if (child == 0) {
        _exit(0);
    }
    waitpid(child, nullptr, 0);
    QuaskTesting::RecordingHandler handler;
    EXPECT_EQ(Util::readCmdline(handler, child), "");
}

}  // namespace
