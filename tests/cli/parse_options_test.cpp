// What the command line asks for, where no report shows it.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <getopt.h>

#include "cli/options.h"

namespace {

using Quask::QuaskTextify;

QuaskTextify::Style styleOf(std::vector<std::string> words)
{
    words.insert(words.begin(), "quask");
    std::vector<char*> pointers;
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    optind = 0;  // what getopt_long() knows of another command line is forgotten
    return Quask::parseOptions(static_cast<int>(words.size()), pointers.data()).style;
}

// The two styles print the same.
TEST(ParseOptions, TheLastOptionForAStyleWins)
{
    EXPECT_EQ(styleOf({}), QuaskTextify::Plain);
    EXPECT_EQ(styleOf({"-p", "-t"}), QuaskTextify::Vosk);
    EXPECT_EQ(styleOf({"-t", "-p"}), QuaskTextify::Pretty);
    EXPECT_EQ(styleOf({"-x", "-t"}), QuaskTextify::Vosk);
    EXPECT_EQ(styleOf({"-t", "-x"}), QuaskTextify::Pretty);
    EXPECT_EQ(styleOf({"-w", "-t"}), QuaskTextify::Vosk);
    EXPECT_EQ(styleOf({"-t", "-w"}), QuaskTextify::Pretty);
    EXPECT_EQ(styleOf({"-t", "-e", "-a"}), QuaskTextify::Vosk);
}

}  // namespace
