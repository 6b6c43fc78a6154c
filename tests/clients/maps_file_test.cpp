#include "clients/maps_file.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <vector>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/private_root.h"

namespace {

using Quask::MapsFile;

class MapsFileTest : public testing::Test
{
protected:
    std::vector<std::string> linesOf(std::string const& contents)
    {
        EXPECT_TRUE(file.open(root.writeFile("maps", contents)));
        return remainingLines();
    }

    std::vector<std::string> remainingLines()
    {
        std::vector<std::string> lines;
        for (std::string_view line; file.nextLine(line);) {
            lines.emplace_back(line);
        }
        return lines;
    }

    static std::ptrdiff_t openDescriptors()
    {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    }

    QuaskTesting::PrivateRoot root;
    MapsFile file;
};

using Lines = std::vector<std::string>;

TEST_F(MapsFileTest, GivesEveryLineWithoutItsNewlineEmptyOnesIncluded)
{
    EXPECT_EQ(linesOf("one\n\n two \nthree\n"), (Lines{"one", "", " two ", "three"}));
    EXPECT_EQ(file.error(), 0);
}

TEST_F(MapsFileTest, AnEmptyFileHasNoLines)
{
    EXPECT_EQ(linesOf(""), Lines{});
}

TEST_F(MapsFileTest, ALastLineThatNoNewlineEndsIsNotGiven)
{
    EXPECT_EQ(linesOf("one\ntwo"), Lines{"one"});
    EXPECT_EQ(linesOf("one"), Lines{});
}

TEST_F(MapsFileTest, ALineMayBeLongerThanTheBufferAndLieAnywhere)
{
    std::string const huge(3'000'000, 'x');
    EXPECT_EQ(linesOf("a\n" + huge + "\nb\n" + huge + "y\nc\n"),
              (Lines{"a", huge, "b", huge + "y", "c"}));
}

TEST_F(MapsFileTest, EveryLineLengthAroundTheBuffersEndIsWhole)
{
    for (std::size_t length = 16 * 1024 - 4; length < 16 * 1024 + 4; ++length) {
        std::string const line(length, 'x');
        EXPECT_EQ(linesOf(line + "\ny\n" + line + "\n"), (Lines{line, "y", line})) << length;
    }
}

TEST_F(MapsFileTest, ManyShortLinesAreGivenInOrder)
{
    std::string contents;
    Lines expected;
    for (int i = 0; i < 20'000; ++i) {
        expected.push_back("line " + std::to_string(i));
        contents += expected.back() + "\n";
    }
    EXPECT_EQ(linesOf(contents), expected);
}

TEST_F(MapsFileTest, ANulIsACharacterLikeAnyOther)
{
    std::string const line("a\0b", 3);
    EXPECT_EQ(linesOf(line + "\n" + line + "\n"), (Lines{line, line}));
}

TEST_F(MapsFileTest, TheNextFileStartsAfreshInTheSameBuffer)
{
    EXPECT_EQ(linesOf("one\nunfinished"), Lines{"one"});
    EXPECT_EQ(linesOf("two\n"), Lines{"two"});

    EXPECT_TRUE(file.open(root.writeFile("maps", "three\nfour\n")));
    std::string_view line;
    EXPECT_TRUE(file.nextLine(line));
    EXPECT_EQ(linesOf("five\n"), Lines{"five"});
}

TEST_F(MapsFileTest, AFileThatCannotBeReadHasNoLinesAndSaysWhy)
{
    EXPECT_TRUE(file.open(root.path())) << "a directory opens and fails at its first read";
    EXPECT_EQ(file.error(), 0);
    EXPECT_EQ(remainingLines(), Lines{});
    EXPECT_EQ(file.error(), EISDIR);
    EXPECT_EQ(linesOf("one\n"), Lines{"one"});
    EXPECT_EQ(file.error(), 0) << "of the next file";
}

TEST_F(MapsFileTest, AFileThatIsNotThereLeavesItClosedAndSaysWhy)
{
    EXPECT_FALSE(file.open(root.path() + "/none"));
    EXPECT_FALSE(file.isOpen());
    EXPECT_EQ(remainingLines(), Lines{});
    EXPECT_EQ(file.error(), ENOENT);
}

TEST_F(MapsFileTest, TheMapsOfAProcessThatEndsAfterTheyWereOpenedSaySo)
{
    pid_t const child = fork();
    if (child == 0) {
        pause();
        _exit(0);
    }
    EXPECT_TRUE(file.open("/proc/" + std::to_string(child) + "/maps"));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    EXPECT_EQ(remainingLines(), Lines{});
    EXPECT_EQ(file.error(), ESRCH);
}

TEST_F(MapsFileTest, TheMapsOfAProcessWithoutMemoryAreEmptyAndNoError)
{
    pid_t const child = fork();
    if (child == 0) {
        _exit(0);
    }
    siginfo_t ended{};
    waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT);
    EXPECT_TRUE(file.open("/proc/" + std::to_string(child) + "/maps"));
    EXPECT_EQ(remainingLines(), Lines{});
    EXPECT_EQ(file.error(), 0);
    waitpid(child, nullptr, 0);
}

TEST_F(MapsFileTest, HoldsOneDescriptorAtMostAndNoneInTheEnd)
{
    std::ptrdiff_t const before = openDescriptors();
    {
        MapsFile other;
        other.open(root.writeFile("maps", "one\n"));
        other.open(root.writeFile("maps", "two\n"));
        EXPECT_EQ(openDescriptors(), before + 1);
        other.close();
        EXPECT_EQ(openDescriptors(), before);
        other.open(root.writeFile("maps", "three\n"));
    }
    EXPECT_EQ(openDescriptors(), before);
}

}  // namespace
