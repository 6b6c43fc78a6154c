// Where the output goes. What happens when it cannot go there is among the faults.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>

#include <fcntl.h>
#include <unistd.h>

#include "support/child_process.h"
#include "support/private_root.h"
#include "support/quask_program.h"
#include "support/table_files.h"

namespace {

using QuaskTesting::bytesOf;
using QuaskTesting::Command;
using QuaskTesting::TableImage;

TEST(Output, IsTheSameThroughAPipeAndIntoAFile)
{
    QuaskTesting::PrivateRoot const root;
    TableImage image = TableImage::of("int", 4).buckets(60000);
    for (std::uint32_t i = 0; i < 20000; ++i) {
        image.chain(i, {{i, bytesOf(i)}});
    }
    image.writeTo(root, "large");
    Command command = QuaskTesting::quask(root, {"large"});
    std::string const piped = QuaskTesting::run(command).out;

    std::string const path = root.path() + "/out.txt";
    command.outDescriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_GE(command.outDescriptor, 0);
    EXPECT_EQ(QuaskTesting::run(command).exitStatus, 0);
    close(command.outDescriptor);
    std::ifstream file(path);
    EXPECT_TRUE(piped == std::string(std::istreambuf_iterator<char>(file), {}));
    EXPECT_EQ(std::count(piped.begin(), piped.end(), '\n'), 20002);
}

}  // namespace
