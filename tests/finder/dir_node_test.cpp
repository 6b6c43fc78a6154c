#include "finder/dir_node.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "finder/surroundings.h"
#include "support/private_root.h"
#include "support/recording_handler.h"

namespace {

using Quask::DirNode;
using QuaskTesting::RecordingHandler;
using Lines = std::vector<std::string>;
using Node = std::shared_ptr<DirNode>;

class DirNodeTest : public testing::Test
{
protected:
    Node open(std::string const& path, Node parent = nullptr)
    {
        return std::make_shared<DirNode>(handler, path, std::move(parent));
    }

    static std::vector<std::string> remainingNames(DirNode const& node)
    {
        std::vector<std::string> names;
        while (dirent const* const entry = node.readEntry()) {
            names.emplace_back(entry->d_name);
        }
        return names;
    }

    // All names without "." and "..", sorted.
    static std::set<std::string> nameSet(DirNode const& node)
    {
        std::vector<std::string> const names = remainingNames(node);
        std::set<std::string> sorted(names.begin(), names.end());
        EXPECT_EQ(sorted.erase(".") + sorted.erase(".."), 2u);
        return sorted;
    }

    QuaskTesting::PrivateRoot root;
    RecordingHandler handler;
};

TEST_F(DirNodeTest, AnEmptyDirectoryHoldsItselfAndItsParent)
{
    Node const node = open(root.path());
    EXPECT_TRUE(node->isOpen());
    std::vector<std::string> names = remainingNames(*node);
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{".", ".."}));
    EXPECT_EQ(node->readEntry(), nullptr);
}

TEST_F(DirNodeTest, EveryEntryComesWithItsType)
{
    root.writeFile("file", "x");
    root.makeDirectory("directory");
    ASSERT_EQ(symlink("file", (root.path() + "/link").c_str()), 0);
    ASSERT_EQ(mkfifo((root.path() + "/pipe").c_str(), 0600), 0);
    std::set<std::pair<std::string, int>> found;
    Node const node = open(root.path());
    while (dirent const* const entry = node->readEntry()) {
        found.emplace(entry->d_name, entry->d_type);
    }
    EXPECT_EQ(found, (std::set<std::pair<std::string, int>>{{".", DT_DIR},
                                                            {"..", DT_DIR},
                                                            {"file", DT_REG},
                                                            {"directory", DT_DIR},
                                                            {"link", DT_LNK},
                                                            {"pipe", DT_FIFO}}));
}

TEST_F(DirNodeTest, ANameMayHoldAnyCharacterButASlash)
{
    std::set<std::string> const names = {
        " ",   "a b", "new\nline", "*?[x]",        "\\",
        "...", "-x",  "\xff\xfe",  "t\xc3\xa4gli", std::string(255, 'n')};
    for (std::string const& name : names) {
        root.writeFile(name, "");
    }
    EXPECT_EQ(nameSet(*open(root.path())), names);
}

TEST_F(DirNodeTest, KeepsThePathAsItWasGiven)
{
    root.makeDirectory("a");
    root.writeFile("b/file", "");
    std::string const path = root.path() + "//a/./../b/";
    Node const node = open(path);
    EXPECT_EQ(node->path(), path);
    EXPECT_EQ(nameSet(*node), std::set<std::string>{"file"});
}

TEST_F(DirNodeTest, OpensADirectoryThroughASymbolicLink)
{
    root.writeFile("directory/file", "");
    ASSERT_EQ(symlink("directory", (root.path() + "/link").c_str()), 0);
    EXPECT_EQ(nameSet(*open(root.path() + "/link")), std::set<std::string>{"file"});
}

TEST_F(DirNodeTest, ADirectoryIsResumedAfterTheEntryThatWasDescendedInto)
{
    for (char const* const name : {"a", "b", "c", "d"}) {
        root.writeFile(std::string(name) + "/in " + name, "");
    }
    std::vector<std::string> seen;
    Node current = open(root.path());
    while (current != nullptr) {
        dirent const* const entry = current->readEntry();
        if (entry == nullptr) {
            current = current->parent();
        } else if (std::string const name = entry->d_name; name != "." && name != "..") {
            seen.push_back(name);
            if (entry->d_type == DT_DIR) {
                current = open(current->path() + "/" + name, current);
            }
        }
    }
    std::vector<std::string> expected;
    for (std::string const& name : QuaskTesting::namesInOrder(root.path())) {
        expected.push_back(name);
        expected.push_back("in " + name);
    }
    EXPECT_EQ(expected.size(), 8u);
    EXPECT_EQ(seen, expected);
}

TEST_F(DirNodeTest, AChildKeepsItsParentsOpen)
{
    root.makeDirectory("a/b");
    std::size_t const before = QuaskTesting::openDescriptors();
    Node first = open(root.path());
    DirNode const* const firstAddress = first.get();
    Node inner = open(root.path() + "/a/b", open(root.path() + "/a", std::move(first)));
    EXPECT_EQ(QuaskTesting::openDescriptors(), before + 3);
    EXPECT_EQ(inner->parent()->parent().get(), firstAddress);
    EXPECT_EQ(inner->parent()->parent()->parent(), nullptr);
    inner = inner->parent();
    EXPECT_EQ(QuaskTesting::openDescriptors(), before + 2);
    EXPECT_EQ(nameSet(*inner->parent()), std::set<std::string>{"a"});
    inner = nullptr;
    EXPECT_EQ(QuaskTesting::openDescriptors(), before);
}

TEST_F(DirNodeTest, AParentThatAnotherHoldsStaysOpen)
{
    root.makeDirectory("a");
    Node const first = open(root.path());
    Node const sibling = open(root.path() + "/a", first);
    open(root.path() + "/a", first);
    EXPECT_EQ(nameSet(*first), std::set<std::string>{"a"});
    EXPECT_EQ(nameSet(*sibling), std::set<std::string>{});
}

TEST_F(DirNodeTest, ADirectoryIsClosedBeforeItsParent)
{
    Node inner = open(root.path() + "/.", open(root.path(), open(root.path() + "/..")));
    handler.lines.clear();
    inner = nullptr;
    EXPECT_EQ(handler.lines, (Lines{"9 DirNode::~DirNode() path: " + root.path() + "/.",
                                    "9 DirNode::~DirNode() path: " + root.path(),
                                    "9 DirNode::~DirNode() path: " + root.path() + "/.."}));
}

TEST_F(DirNodeTest, AChainOfParentsOfAnyLengthEndsWithoutExhaustingTheStack)
{
    RecordingHandler silent(-1);
    Node inner;
    for (int i = 0; i < 300000; ++i) {
        inner = std::make_shared<DirNode>(silent, "", std::move(inner));
    }
    std::weak_ptr<DirNode> const watched = inner->parent()->parent();
    inner = nullptr;
    EXPECT_TRUE(watched.expired());
}

TEST_F(DirNodeTest, ItsDescriptorIsClosedOnExec)
{
    Node const node = open(root.path());
    int const descriptor = QuaskTesting::descriptorOf(root.path());
    ASSERT_GE(descriptor, 0);
    EXPECT_EQ(fcntl(descriptor, F_GETFD), FD_CLOEXEC);
}

TEST_F(DirNodeTest, SharesTheHandlerAndLeavesItAlive)
{
    static_assert(std::is_base_of_v<Dovan::Debuggable, DirNode>);
    static_assert(!std::is_copy_constructible_v<DirNode> && !std::is_copy_assignable_v<DirNode>);
    open(root.path());
    EXPECT_TRUE(handler.isEnabled(9));
}

TEST_F(DirNodeTest, EveryDirectoryAndEveryReadIsTraced)
{
    std::string const path = root.path();
    Node node = open(path);
    node->readEntry();
    node->readEntry();
    node->readEntry();
    node = nullptr;
    EXPECT_EQ(handler.lines,
              (Lines{"9 DirNode::DirNode() path: " + path, "9 DirNode::readEntry() path: " + path,
                     "9 DirNode::readEntry() path: " + path, "9 DirNode::readEntry() path: " + path,
                     "9 DirNode::~DirNode() path: " + path}));
}

}  // namespace
