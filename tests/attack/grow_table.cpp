// grow_table DIRECTORY SLOTS: takes the table over and grows it to so many slots.

#include <cstdint>
#include <exception>
#include <iostream>
#include <string>

#include "support/table_writer.h"

int main(int argc, char** argv)
try {
    if (argc != 3) {
        std::cerr << "usage: grow_table DIRECTORY SLOTS\n";
        return 2;
    }
    QuaskTesting::TableWriter(argv[1]).grow(static_cast<std::uint32_t>(std::stoul(argv[2])));
} catch (std::exception const& error) {
    std::cerr << "grow_table: " << error.what() << "\n";
    return 1;
}
