#include "stat/client_mapping.h"

#include <gtest/gtest.h>

#include <sys/sysmacros.h>

namespace {

using Quask::Stat::ClientFile;
using Quask::Stat::ClientMapping;
using Quask::Stat::readClientMapping;

TEST(ClientMapping, IsReadFromALineOfAProcess)
{
    auto const mapping = readClientMapping(
        "7f00-7f01 rw-s 00000000 00:1a 1234                       /dev/shm/quask/a/slots");
    ASSERT_TRUE(mapping);
    EXPECT_EQ(mapping->identity.device, makedev(0, 0x1a));
    EXPECT_EQ(mapping->identity.inode, 1234u);
    EXPECT_EQ(mapping->file, ClientFile::slots);
    EXPECT_EQ(mapping->directory, "/dev/shm/quask/a");
    EXPECT_TRUE(mapping->canWrite);
    EXPECT_FALSE(mapping->canRead);
    EXPECT_FALSE(mapping->isRemoved);
}

TEST(ClientMapping, SaysWhenTheFileHasBeenRemoved)
{
    auto const mapping =
        readClientMapping("1-2 r--s 00000000 fd:01 7 /dev/shm/quask/a/vandral.1 (deleted)");
    ASSERT_TRUE(mapping);
    EXPECT_EQ(mapping->file, ClientFile::vandral1);
    EXPECT_EQ(mapping->directory, "/dev/shm/quask/a");
    EXPECT_TRUE(mapping->isRemoved);
    EXPECT_TRUE(mapping->canRead);
    EXPECT_FALSE(mapping->canWrite);
}

TEST(ClientMapping, MayLieInADirectoryWithSpacesAndNewlines)
{
    auto const mapping = readClientMapping("1-2 r--s 0 0:1 7 /raw/blob 5/a\\012b/orvik");
    ASSERT_TRUE(mapping);
    EXPECT_EQ(mapping->file, ClientFile::orvik);
    EXPECT_EQ(mapping->directory, "/raw/blob 5/a\nb");
}

TEST(ClientMapping, IsNothingForOtherLines)
{
    EXPECT_FALSE(readClientMapping(""));
    EXPECT_FALSE(readClientMapping("1-2 rw-p 0 00:00 0 [heap]"));
    EXPECT_FALSE(readClientMapping("1-2 r--s 0 0:1 7 /a/buckets"));
    EXPECT_FALSE(readClientMapping("1-2 r--s 0 0:1 7 /a/slots2"));
    EXPECT_FALSE(readClientMapping("1-2 r--s 0 0:1 7 /a/vandral.2"));
    EXPECT_FALSE(readClientMapping("1-2 r--s 0 zz 7 /a/slots"));
    EXPECT_FALSE(readClientMapping("1-2 r--s 0 0:1 x /a/slots"));
    EXPECT_FALSE(readClientMapping("/slots"));
}

}  // namespace
