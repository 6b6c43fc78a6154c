#pragma once

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include <linux/capability.h>

#include "support/child_process.h"
#include "support/mapping_client.h"
#include "support/own_namespaces.h"
#include "support/private_root.h"
#include "support/pseudo_terminal.h"
#include "support/table_files.h"

namespace QuaskTesting {

using Arguments = std::vector<std::string>;

// For Command::lacking: any of them is enough to look into other processes on some kernel.
inline std::vector<int> rightsToLookIntoOthers()
{
    return {CAP_SYS_PTRACE, CAP_SYS_ADMIN, CAP_PERFMON};
}

// Runs the real program on the tables of a private root. There are no processes but the test's.
class StatTest : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!inOwnNamespaces()) {
            GTEST_SKIP() << noOwnNamespaces;
        }
    }

    Command command(Arguments arguments) const
    {
        Command command;
        command.words = std::move(arguments);
        command.words.insert(command.words.begin(), QUASK_STAT_UNDER_TEST);
        command.environment = {{"QUASK_TEST_ROOT", root.path()}, {"LC_ALL", "C"}};
        command.unset = {"DOVAN_DEBUG", "POSIXLY_CORRECT", "COLUMNS"};
        return command;
    }

    Finished stat(Arguments arguments) const { return run(command(std::move(arguments))); }

    // What a terminal of this width shows.
    std::string onTerminal(Arguments arguments, unsigned short width) const
    {
        return PseudoTerminal(command(std::move(arguments)), width, 50).finish().out;
    }

    // The cell of the only table that there is.
    std::string cell(std::string const& column) const
    {
        Finished const run = stat({"-n", "-o", column});
        EXPECT_EQ(run.exitStatus, 0);
        EXPECT_EQ(run.err, "");
        return run.out.substr(0, run.out.find('\n'));
    }

    // 20 of 32 slots are used, there may be 100, in 40 buckets. Its owner is this process.
    static TableImage ordinary()
    {
        TableImage image = TableImage::of("int", 4).buckets(40).slots(32);
        image.slotsHeader.maxSlots = 100;
        image.slotsHeader.occupiedSlots = 20;
        image.slotsHeader.freeHead = 20;
        image.bucketsHeader.ownerPid = static_cast<std::uint32_t>(getpid());
        return image;
    }

    // A process that has files of a table mapped, as "slots:r".
    MappingClient clientOf(std::string const& table, Arguments files) const
    {
        for (std::string& file : files) {
            file = root.path() + "/" + table + "/" + file;
        }
        return MappingClient(files);
    }

    static std::string shown(ChildProcess const& client)
    {
        return "mapping_client-" + std::to_string(client.pid());
    }

    inline static Arguments const writing{"slots:rw", "vandral.1:rw"};
    inline static Arguments const reading{"slots:r"};

    PrivateRoot root;
};

}  // namespace QuaskTesting
