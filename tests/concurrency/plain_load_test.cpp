#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <thread>

#include "support/private_root.h"
#include "support/table_writer.h"
#include "table/quask_reader_generic.h"

// A test of the other tests here: they would notice a load that is not atomic.
namespace {

using namespace QuaskTesting;

void readPlainlyBesideAWriter()
{
    PrivateRoot const root;
    TableWriter writer(root.path() + "/eq", {});
    Quask::QuaskReaderGeneric reader("eq");
    if (!reader.attach()) {
        std::_Exit(1);
    }
    std::thread writing([&] { writer.insert(0, std::string(8, 'x')); });
    volatile std::uint32_t const occupied = reader.liveSlotsHeader().occupiedSlots;
    static_cast<void>(occupied);
    writing.join();
}

TEST(PlainLoadDeathTest, IsReported)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            readPlainlyBesideAWriter();
            std::exit(0);
        },
        testing::ExitedWithCode(66), "data race");
}

}  // namespace
