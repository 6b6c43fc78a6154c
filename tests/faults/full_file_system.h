#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>

#include <fcntl.h>
#include <unistd.h>

#include "faults/faults_fixture.h"
#include "support/own_namespaces.h"
#include "support/small_file_system.h"
#include "support/table_files.h"

namespace QuaskTesting {

// A small file system on the directory "full" of the root directory.
class SmallFileSystemTest : public FaultsTest
{
protected:
    void SetUp() override
    {
        if (!inOwnNamespaces()) {
            GTEST_SKIP() << noOwnNamespaces;
        }
        fileSystem.emplace(root.makeDirectory("full"), room);
    }

    // Takes what is left of it.
    void fill() const
    {
        std::ofstream filler(root.path() + "/full/filler");
        while (filler.put('x').flush()) {
        }
    }

    static constexpr std::size_t room = std::size_t{64} << 10;  // bytes
    std::optional<SmallFileSystem> fileSystem;
};

// A report is written to a file system that has no room for it.
class FullFileSystemTest : public SmallFileSystemTest
{
protected:
    void expectAnErrorAfterWhatFits()
    {
        large().writeTo(root, "large");
        std::string const whole = quask({"large"}).out;
        std::string const path = root.path() + "/full/out";
        Command command = this->command({"large"});
        command.outDescriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        expectFinished(run(command), "", "Error writing to standard output\n", 1);
        close(command.outDescriptor);
        EXPECT_TRUE(contentsOf(path) == whole.substr(0, room));
    }

    void expectAReportFileWithoutWhatDoesNotFit()
    {
        makeSmall("feed");
        fill();
        std::string const path = root.path() + "/full/report";
        expectFinished(quask({"-f", path}), "", "", 0);
        EXPECT_TRUE(std::filesystem::exists(path));
        EXPECT_EQ(contentsOf(path), "");
    }

private:
    static std::string contentsOf(std::string const& path)
    {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
};

// A file of holes on a file system without room for them: no load from it can succeed.
class UnreadablePagesTest : public SmallFileSystemTest
{
protected:
    // A table on that file system, with holes in place of this file's contents from `offset` on.
    void makeTableWithHoles(TableFile file, std::uint64_t offset)
    {
        TableImage const image = TableImage::of("int", 4).buckets(2000).chain(1, {{0, ""}});
        image.writeTo(root, "full/feed");
        std::string const path = root.path() + "/full/feed/" + fileName(file);
        std::uint64_t const size = std::filesystem::file_size(path);
        std::filesystem::resize_file(path, offset);
        std::filesystem::resize_file(path, size);
        fill();
    }

    std::string unreadable(std::string const& file) const
    {
        return "Quask table file " + root.path() + "/full/feed/" + file + " could not be read\n";
    }
};

}  // namespace QuaskTesting
