// replace_table files|directory TABLE STAGE [NUMBER]
//
// Puts the table number NUMBER of making.h into the place of the one in the directory TABLE, or,
// without NUMBER, says "ready", then table after table until its standard input ends, and how many.
// STAGE is a directory in the same file system, where tables are made.
//
//     files      all files are removed, then the new ones get their names: at no moment are files
//                of two tables there
//     directory  the directory of the new table gets the name at one blow

#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <iostream>
#include <string>
#include <string_view>
#include <system_error>

#include <fcntl.h>

#include "attack/input_ended.h"
#include "attack/making.h"
#include "support/table_layout.h"

namespace {

using QuaskTesting::allTableFiles;
using QuaskTesting::fileName;
using QuaskTesting::TableFile;

void replaceFiles(std::string const& table, std::string const& made)
{
    for (TableFile const file : allTableFiles) {
        std::filesystem::remove(table + "/" + fileName(file));
    }
    for (TableFile const file : allTableFiles) {
        std::filesystem::rename(made + "/" + fileName(file), table + "/" + fileName(file));
    }
}

void replaceDirectory(std::string const& table, std::string const& made)
{
    if (renameat2(AT_FDCWD, made.c_str(), AT_FDCWD, table.c_str(), RENAME_EXCHANGE) != 0) {
        throw std::system_error(errno, std::generic_category(), "cannot exchange " + table);
    }
}

void replaceOnce(std::string_view way, std::string const& table, std::string const& stage,
                 std::uint32_t number)
{
    std::string const made = stage + "/" + std::to_string(number);
    QuaskAttack::making(number).writeTo(made);
    way == "files" ? replaceFiles(table, made) : replaceDirectory(table, made);
    std::filesystem::remove_all(made);
}

}  // namespace

int main(int argc, char** argv)
try {
    if (argc != 4 && argc != 5) {
        std::cerr << "usage: replace_table files|directory TABLE STAGE [NUMBER]\n";
        return 2;
    }
    std::string_view const way = argv[1];
    if (argc == 5) {
        replaceOnce(way, argv[2], argv[3], static_cast<std::uint32_t>(std::stoul(argv[4])));
        return 0;
    }
    std::cout << "ready" << std::endl;
    std::uint32_t number = 1;
    while (!QuaskAttack::inputEnded()) {
        replaceOnce(way, argv[2], argv[3], ++number);
    }
    std::cout << number << std::endl;
} catch (std::exception const& error) {
    std::cerr << "replace_table: " << error.what() << "\n";
    return 1;
}
