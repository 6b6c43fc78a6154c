// How the search copes with a tree that is forbidden, broken or changing.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "base/exception.h"
#include "finder/surroundings.h"
#include "finder/table_finder.h"
#include "support/private_root.h"
#include "support/recording_handler.h"

namespace {

using Quask::TableFinder;
using QuaskTesting::RecordingHandler;
using Names = std::vector<std::string>;
using Lines = std::vector<std::string>;

// A channel that does something to the tree at the moment when a certain message is logged.
class ActingHandler final : public Dovan::Platform::DebugHandler
{
public:
    bool isEnabled(int /*level*/) const override { return true; }

    void log(std::ostream& message, int level) override
    {
        record.log(message, level);
        if (auto const found = actions.find(record.lines.back()); found != actions.end()) {
            found->second();
        }
    }

    RecordingHandler record;
    std::map<std::string, std::function<void()>> actions;
};

class TableFinderFault : public testing::Test
{
protected:
    // The names found with the empty expression, sorted.
    static Names findAll(Dovan::Platform::DebugHandler& handler)
    {
        TableFinder finder(handler);
        EXPECT_TRUE(finder.find(""));
        Names names(finder.begin(), finder.end());
        std::sort(names.begin(), names.end());
        return names;
    }

    // The root directory cannot be opened for this reason.
    static void expectNoSearch(std::string const& message)
    {
        RecordingHandler handler(5);
        TableFinder finder(handler);
        EXPECT_FALSE(finder.find("x"));
        EXPECT_TRUE(finder.empty());
        EXPECT_EQ(handler.lines, (Lines{"3 TableFinder::find() expression: x", message}));
    }

    std::string const& path() const { return root.path(); }

    QuaskTesting::PrivateRoot root;
};

TEST_F(TableFinderFault, AMissingRootDirectoryEndsTheSearch)
{
    root.setRootDirectory("missing");
    expectNoSearch("5 DirNode::DirNode() failed to open " + path() +
                   "/missing errno: No such file or directory");
}

TEST_F(TableFinderFault, ARootDirectoryThatIsAFileEndsTheSearch)
{
    root.writeFile("slots", "x");
    root.setRootDirectory("slots");
    expectNoSearch("5 DirNode::DirNode() failed to open " + path() +
                   "/slots errno: Not a directory");
}

TEST_F(TableFinderFault, ARootDirectoryThatIsABrokenLinkEndsTheSearch)
{
    std::filesystem::create_symlink("nowhere", path() + "/link");
    root.setRootDirectory("link");
    expectNoSearch("5 DirNode::DirNode() failed to open " + path() +
                   "/link errno: No such file or directory");
}

TEST_F(TableFinderFault, ARootDirectoryThatNoDescriptorIsLeftForEndsTheSearch)
{
    QuaskTesting::DescriptorLimit const limit(0);
    expectNoSearch("1 DirNode::DirNode() failed to open " + path() + " errno: Too many open files");
}

TEST_F(TableFinderFault, AForbiddenDirectoryYieldsNothing)
{
    for (char const* const name : {"a", "b", "c"}) {
        root.writeFile(std::string(name) + "/slots", "x");
    }
    std::filesystem::permissions(path(), std::filesystem::perms(0755));
    std::filesystem::permissions(path() + "/b", std::filesystem::perms(0));
    RecordingHandler handler(1);
    RecordingHandler routine(5);
    {
        QuaskTesting::OrdinaryUser const user;
        if (!user.succeeded()) {
            GTEST_SKIP() << "root cannot become another user here";
        }
        EXPECT_EQ(findAll(handler), (Names{"a", "c"}));
        EXPECT_EQ(findAll(routine), (Names{"a", "c"}));
    }
    std::filesystem::permissions(path() + "/b", std::filesystem::perms(0700));
    EXPECT_EQ(handler.lines, Lines{});
    EXPECT_EQ(
        std::count(routine.lines.begin(), routine.lines.end(),
                   "5 DirNode::DirNode() failed to open " + path() + "/b errno: Permission denied"),
        1);
}

TEST_F(TableFinderFault, DirectoriesThatNoDescriptorIsLeftForYieldNothing)
{
    root.writeFile("a/too/deep/slots", "x");
    root.writeFile("b/slots", "x");
    root.writeFile("c/too/slots", "x");
    root.writeFile("d/slots", "x");
    RecordingHandler handler(1);
    QuaskTesting::DescriptorLimit const limit(2);
    EXPECT_EQ(findAll(handler), (Names{"b", "d"}));
    std::sort(handler.lines.begin(), handler.lines.end());
    EXPECT_EQ(handler.lines, (Lines{"1 DirNode::DirNode() failed to open " + path() +
                                        "/a/too errno: Too many open files",
                                    "1 DirNode::DirNode() failed to open " + path() +
                                        "/c/too errno: Too many open files"}));
}

TEST_F(TableFinderFault, ADirectoryThatBecomesALinkBeforeItIsOpenedYieldsNothing)
{
    root.setRootDirectory("tables");
    std::string const exchanged = path() + "/tables/exchanged";
    root.writeFile("elsewhere/secret/slots", "x");
    root.writeFile("tables/a/slots", "x");
    root.writeFile("tables/exchanged/slots", "x");
    root.writeFile("tables/z/slots", "x");
    ActingHandler handler;
    handler.actions["9 DirNode::DirNode() path: " + exchanged] = [&] {
        std::filesystem::remove_all(exchanged);
        std::filesystem::create_symlink(path() + "/elsewhere", exchanged);
    };
    EXPECT_EQ(findAll(handler), (Names{"a", "z"}));
    EXPECT_EQ(
        std::count(handler.record.lines.begin(), handler.record.lines.end(),
                   "5 DirNode::DirNode() failed to open " + exchanged + " errno: Not a directory"),
        1);
}

TEST_F(TableFinderFault, ADirectoryAboveThatBecomesALinkLeadsNowhereElse)
{
    root.setRootDirectory("tables");
    std::string const exchanged = path() + "/tables/exchanged";
    root.writeFile("elsewhere/deep/secret/slots", "x");
    root.writeFile("tables/exchanged/deep/slots", "x");
    ActingHandler handler;
    handler.actions["9 DirNode::DirNode() path: " + exchanged + "/deep"] = [&] {
        std::filesystem::rename(exchanged, path() + "/moved");
        std::filesystem::create_symlink(path() + "/elsewhere", exchanged);
    };
    EXPECT_EQ(findAll(handler), Names{"exchanged/deep"});
}

TEST_F(TableFinderFault, ADirectoryThatIsRemovedBeforeItIsOpenedYieldsNothing)
{
    root.writeFile("a/slots", "x");
    root.writeFile("gone/slots", "x");
    root.writeFile("z/slots", "x");
    ActingHandler handler;
    handler.actions["9 DirNode::DirNode() path: " + path() + "/gone"] = [this] {
        std::filesystem::remove_all(path() + "/gone");
    };
    EXPECT_EQ(findAll(handler), (Names{"a", "z"}));
}

TEST_F(TableFinderFault, ADirectoryThatIsRemovedWhileItIsReadYieldsNothing)
{
    root.writeFile("a/slots", "x");
    root.writeFile("gone/slots", "x");
    root.writeFile("z/slots", "x");
    ActingHandler handler;
    handler.actions["9 DirNode::readEntry() path: " + path() + "/gone"] = [this] {
        std::filesystem::remove_all(path() + "/gone");
    };
    EXPECT_EQ(findAll(handler), (Names{"a", "z"}));
}

TEST_F(TableFinderFault, AnEntryOfUnknownTypeIsNeitherFollowedNorTested)
{
    root.writeFile("unknown/slots", "x");
    root.writeFile("a/unknown/slots", "x");
    root.writeFile("b/slots", "x");
    RecordingHandler handler(9);
    {
        QuaskTesting::UnknownType const unknown("unknown");
        EXPECT_EQ(findAll(handler), Names{"b"});
    }
    for (std::string const& line : handler.lines) {
        EXPECT_EQ(line.find("unknown"), std::string::npos) << line;
    }
    QuaskTesting::UnknownType const unknown("slots");
    EXPECT_EQ(findAll(handler), Names{});
}

TEST_F(TableFinderFault, ADirectoryThatCannotBeReadEndsTheSearchWithAnException)
{
    root.writeFile("a/b/slots", "x");
    std::string const message =
        "DirNode::readEntry() failed to read " + path() + "/a/b errno: Not a directory";
    std::size_t const before = QuaskTesting::openDescriptors();
    ActingHandler handler;
    bool done = false;
    handler.actions["9 DirNode::readEntry() path: " + path() + "/a/b"] = [this, &done] {
        if (!done) {
            QuaskTesting::makeUnreadable(QuaskTesting::descriptorOf(path() + "/a/b"));
            done = true;
        }
    };
    TableFinder finder(handler);
    try {
        finder.find("");
        FAIL() << "nothing was thrown";
    } catch (Dovan::RuntimeException const& exception) {
        EXPECT_EQ(exception.what(), message);
    }
    EXPECT_EQ(std::count(handler.record.lines.begin(), handler.record.lines.end(), "0 " + message),
              1);
    EXPECT_EQ(QuaskTesting::openDescriptors(), before);
}

TEST_F(TableFinderFault, ARootDirectoryThatCannotBeReadEndsTheSearchWithAnException)
{
    ActingHandler handler;
    handler.actions["9 DirNode::readEntry() path: " + path()] = [this] {
        QuaskTesting::makeUnreadable(QuaskTesting::descriptorOf(path()));
    };
    EXPECT_THROW(TableFinder(handler).find(""), Dovan::RuntimeException);
}

TEST_F(TableFinderFault, WhatWasFoundBeforeAnExceptionIsKept)
{
    root.writeFile("a/slots", "x");
    ActingHandler handler;
    handler.actions["9 DirNode::~DirNode() path: " + path() + "/a"] = [this] {
        // The root directory's remaining entries may have been read ahead; its end has not.
        QuaskTesting::makeUnreadable(QuaskTesting::descriptorOf(path()));
    };
    TableFinder finder(handler);
    EXPECT_THROW(finder.find(""), Dovan::RuntimeException);
    EXPECT_EQ(finder, Names{"a"});
}

TEST_F(TableFinderFault, ATableInTheRootDirectoryItselfIsRefused)
{
    // No expression matches the root directory itself, unless the two make a pattern together: here
    // [/[] stands for the last character of the root directory's name.
    root.writeFile("root[/slots", "x");
    root.setRootDirectory("root[");
    std::string const message =
        "TableFinder::find() unexpectedlyfound Quask files in root path directory";
    std::size_t const before = QuaskTesting::openDescriptors();
    RecordingHandler handler(0);
    TableFinder finder(handler);
    try {
        finder.find("/[]");
        FAIL() << "nothing was thrown";
    } catch (Dovan::RuntimeException const& exception) {
        EXPECT_EQ(exception.what(), message);
    }
    EXPECT_EQ(handler.lines, Lines{"0 " + message});
    EXPECT_TRUE(finder.empty());
    EXPECT_EQ(QuaskTesting::openDescriptors(), before);
}

TEST_F(TableFinderFault, NoDirectoryStaysOpenAfterASearch)
{
    root.writeFile("a/b/slots", "x");
    root.writeFile("a/c/d/slots", "x");
    root.makeDirectory("e/f");
    std::size_t const before = QuaskTesting::openDescriptors();
    RecordingHandler handler(-1);
    EXPECT_EQ(findAll(handler), (Names{"a/b", "a/c/d"}));
    EXPECT_EQ(QuaskTesting::openDescriptors(), before);
    EXPECT_EQ(handler.lines, Lines{});
}

}  // namespace
