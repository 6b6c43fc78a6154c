#include "support/proving_headers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/private_root.h"
#include "support/store_recorder.h"
#include "support/table_writer.h"

namespace {

using namespace QuaskTesting;

class ProvingHeader : public testing::Test
{
protected:
    PrivateRoot root;
    std::string directory = root.path() + "/eq";
    TableWriter writer{directory, {}};
};

// All moments of a header, from before the operation on.
template <typename Operation>
std::vector<std::string> momentsOf(TableWriter const& writer, std::string const& directory,
                                   TableFile file, Operation&& operation)
{
    StoreReplay replay(directory);
    auto const steps = storesOf(writer, operation);
    replay.restore();
    std::vector<std::string> moments{replay.contents(file).substr(0, 200)};
    for (StoreStep const& step : steps) {
        replay.apply(step);
        moments.push_back(replay.contents(file).substr(0, 200));
    }
    return moments;
}

// A copy whose front is of one moment and whose rest of another.
std::string mixed(std::string const& front, std::string const& rest, std::size_t size)
{
    return front.substr(0, size) + rest.substr(size);
}

TEST_F(ProvingHeader, EveryMomentOfAVandralHeaderIsOne)
{
    auto const moments = momentsOf(writer, directory, TableFile::vandral1, [&] {
        advanceVandralHeader(writer, 1);
        advanceVandralHeader(writer, 2);
    });
    EXPECT_EQ(moments.size(), 13u);
    for (std::string const& moment : moments) {
        EXPECT_TRUE(isVandralHeaderOfOneMoment(moment.data()));
    }
}

TEST_F(ProvingHeader, AVandralHeaderMixedOfTwoMomentsShows)
{
    auto const moments = momentsOf(writer, directory, TableFile::vandral1, [&] {
        advanceVandralHeader(writer, 1);
        advanceVandralHeader(writer, 2);
        advanceVandralHeader(writer, 3);
    });
    int mixes = 0;
    for (std::string const& first : moments) {
        for (std::string const& second : moments) {
            for (std::size_t size = 8; size < 56; size += 8) {
                std::string const copy = mixed(first, second, size);
                bool const isMoment =
                    std::find(moments.begin(), moments.end(), copy) != moments.end();
                EXPECT_EQ(isVandralHeaderOfOneMoment(copy.data()), isMoment);
                mixes += isMoment ? 0 : 1;
            }
        }
    }
    EXPECT_GT(mixes, 100);
}

TEST_F(ProvingHeader, EveryMomentOfASlotHeaderIsOne)
{
    advanceSlotsHeader(writer, 1);
    auto const moments = momentsOf(writer, directory, TableFile::slots, [&] {
        advanceSlotsHeader(writer, 2);
        writer.insert(0, "12345678");
        writer.grow(40);
        advanceSlotsHeader(writer, 3);
        writer.remove(0, 0);
    });
    for (std::string const& moment : moments) {
        EXPECT_TRUE(isSlotsHeaderOfOneMoment(moment.data()));
    }
}

TEST_F(ProvingHeader, ASlotHeaderOfTwoGenerationsShows)
{
    advanceSlotsHeader(writer, 1);
    auto const moments = momentsOf(writer, directory, TableFile::slots, [&] {
        advanceSlotsHeader(writer, 2);
        advanceSlotsHeader(writer, 3);
    });
    EXPECT_FALSE(isSlotsHeaderOfOneMoment(mixed(moments.front(), moments.back(), 100).data()));
    EXPECT_FALSE(isSlotsHeaderOfOneMoment(mixed(moments.back(), moments.front(), 100).data()));
}

TEST_F(ProvingHeader, ASlotHeaderWithMoreThanItsCountShows)
{
    advanceSlotsHeader(writer, 1);
    for (int i = 0; i < 16; ++i) {
        writer.insert(0, "12345678");
    }
    auto const moments =
        momentsOf(writer, directory, TableFile::slots, [&] { writer.insert(0, "12345678"); });
    EXPECT_FALSE(isSlotsHeaderOfOneMoment(mixed(moments.back(), moments.front(), 168).data()));
}

}  // namespace
