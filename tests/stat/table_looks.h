#pragma once

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

#include "stat/table_look.h"
#include "support/table_files.h"

namespace QuaskTesting {

// The header that these bytes of a file begin with.
template <typename Header>
Header headerOf(std::string const& file)
{
    alignas(Header) std::array<unsigned char, sizeof(Header)> bytes{};
    std::memcpy(bytes.data(), file.data(), std::min(file.size(), bytes.size()));
    return *reinterpret_cast<Header const*>(bytes.data());
}

// What is read of these files of a table called "feed".
inline Quask::Stat::TableLook lookOf(TableImage const& image)
{
    using namespace Quask::Stat;
    TableLook look;
    look.name = "feed";
    look.figures.main =
        MainHeaders{headerOf<Quask::BucketTable::Header>(image.bucketsFile()),
                    headerOf<Quask::SlotTable<Quask::EmptyValue>::Header>(image.slotsFile())};
    look.figures.notifications =
        NotificationHeaders{headerOf<Quask::Vandral::Header>(image.vandral1File()),
                            headerOf<Quask::Vandral::Header>(image.vandral2File())};
    look.figures.files.fill(FileIdentity{1, 2});
    look.figures.fileBytes = 1000;
    return look;
}

// A sound table: 20 of 32 slots are used, there may be 100, in 40 buckets.
inline TableImage ordinaryTable()
{
    TableImage image = TableImage::of("int", 4).buckets(40).slots(32);
    image.slotsHeader.maxSlots = 100;
    image.slotsHeader.occupiedSlots = 20;
    image.slotsHeader.freeHead = 20;
    return image;
}

}  // namespace QuaskTesting
