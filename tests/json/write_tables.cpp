// write_tables ROOT SEED
//
// Makes tables of every kind below the directory ROOT, each a directory named by a number: values
// of every type that has a printer and of some that have none, alone and in arrays of several
// lengths, from random bytes and from those that are special; strange type names; a large value;
// values that are being rewritten. The same seed makes the same tables.

#include <array>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "support/table_files.h"

namespace {

using QuaskTesting::bytesOf;
using QuaskTesting::TableImage;

struct Type
{
    std::string name;
    std::uint32_t size;
};

std::vector<Type> const types = {
    {"bool", 1},
    {"char", 1},
    {"float", 4},
    {"double", 8},
    {"signed char", 1},
    {"short", 2},
    {"int", 4},
    {"long", 8},
    {"long long", 8},
    {"int8_t", 1},
    {"std::int16_t", 2},
    {"int32_t", 4},
    {"std::int64_t", 8},
    {"unsigned char", 1},
    {"unsigned short", 2},
    {"unsigned", 4},
    {"unsigned int", 4},
    {"unsigned long", 8},
    {"unsigned long long", 8},
    {"uint8_t", 1},
    {"uint16_t", 2},
    {"std::uint32_t", 4},
    {"uint64_t", 8},
    {"unsigned int8_t", 1},
    {"unsigned int16_t", 2},
    {"unsigned int32_t", 4},
    {"unsigned int64_t", 8},
    {"Feed::Quote", 12},
    {"", 3},
    {"int\t\"\\\n\x80\xc3\xa4", 4},
};

// Bytes that text, numbers or JSON treat in a way of their own.
std::vector<std::string> const specialBytes = {
    std::string(32, '\0'),
    std::string(32, '\xff'),
    "\"\\/\b\f\n\r\t\x01\x1f\x7f'{}[],:",
    "gr\xc3\xbc\xc3\x9f \xe2\x82\xac \xf0\x9f\x90\x84 \xef\xbf\xbf \xf4\x8f\xbf\xbf",
    "\xc3(\xe2\x82(\xf0\x9f\x90(\xe2(\xf0\x9f(",
    "\xc0\x80\xe0\x80\x80\xed\xa0\x80\xf4\x90\x80\x80\xf8\x88\x80\x80\x80",
    "\x80\xbf\xfe\xff\xc3\xc3\xa4\xf0\x9f\x90\x84\x84",
    "abc\xe2\x82",
    "\xc2\x85\xe2\x80\xa8\xc2\x9b",
    std::string(bytesOf(std::numeric_limits<double>::quiet_NaN())) +
        std::string(bytesOf(-std::numeric_limits<double>::infinity())),
    std::string(bytesOf(std::numeric_limits<float>::quiet_NaN())) +
        std::string(bytesOf(std::numeric_limits<float>::infinity())),
    std::string(bytesOf(0.1f)) + std::string(bytesOf(-0.0f)) +
        std::string(bytesOf(std::numeric_limits<float>::denorm_min())),
    std::string(bytesOf(0.1)) + std::string(bytesOf(1e300)) +
        std::string(bytesOf(std::numeric_limits<double>::denorm_min())),
    std::string(bytesOf(std::numeric_limits<std::int64_t>::min())) +
        std::string(bytesOf(std::numeric_limits<std::int64_t>::max())),
};

class Tables
{
public:
    Tables(std::string root, unsigned seed) : root_(std::move(root)), random_(seed) {}

    // A table of some chains with values of this type.
    void write(std::string const& type, std::uint32_t size)
    {
        constexpr std::uint32_t chains = 12;
        TableImage image = TableImage::of(type, size).buckets(3 * chains);
        std::uint32_t slot = 0;
        for (std::uint32_t i = 0; i < chains; ++i) {
            std::vector<std::string> values(below(4));
            for (std::string& value : values) {
                value = someBytes(size);
            }
            std::vector<TableImage::Element> elements;
            for (std::string const& value : values) {
                elements.emplace_back(slot++, value);
            }
            image.chain(3 * i + below(3), elements);
        }
        for (std::uint32_t i = 0; i < slot; i += 1 + below(8)) {
            image.slotImages[i].sequence = 4 * below(1000) + (below(8) == 0 ? 2 : 0);
        }
        image.lookaside.value = someBytes(size);
        image.writeTo(root_ + "/" + std::to_string(1000 + count_++));
    }

private:
    std::uint32_t below(std::uint32_t limit)
    {
        return static_cast<std::uint32_t>(random_() % limit);
    }

    std::string someBytes(std::uint32_t size)
    {
        std::string bytes;
        bool const special = below(2) == 0;
        while (bytes.size() < size) {
            if (special) {
                bytes += specialBytes[below(static_cast<std::uint32_t>(specialBytes.size()))];
            } else {
                bytes += static_cast<char>(random_());
            }
        }
        bytes.resize(size);
        return bytes;
    }

    std::string const root_;
    std::mt19937_64 random_;
    unsigned count_ = 0;
};

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::cerr << "usage: write_tables ROOT SEED\n";
        return 2;
    }
    Tables tables(argv[1], static_cast<unsigned>(std::stoul(argv[2])));
    for (Type const& type : types) {
        tables.write(type.name, type.size);
        for (std::uint32_t const count : {1u, 2u, 7u, 40u}) {
            tables.write(type.name + "[" + std::to_string(count) + "]", count * type.size);
        }
        tables.write(type.name, type.size + 1);
    }
    tables.write("int", 0);
    tables.write("char[70001]", 70001);
    tables.write("double[9000]", 72000);
    tables.write("Feed::Picture", 70001);
}
