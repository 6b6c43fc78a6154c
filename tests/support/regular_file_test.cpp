#include "support/regular_file.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <string>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

#include "support/forked.h"
#include "support/private_root.h"

namespace {

std::function<void()> afterNextLook;

}  // namespace

// The linker puts this in the place of fstat() in the code under test.
extern "C" {
int __real_fstat(int descriptor, struct stat* status);

int __wrap_fstat(int descriptor, struct stat* status)
{
    int const result = __real_fstat(descriptor, status);
    if (afterNextLook) {
        std::exchange(afterNextLook, nullptr)();
    }
    return result;
}
}

namespace {

// A pipe would hold whoever opens it until somebody writes to it.
TEST(RegularFile, APipeThatTakesItsPlaceAfterTheFirstLookIsNotWaitedFor)
{
    QuaskTesting::PrivateRoot const root;
    std::string const path = root.writeFile("slots", "x");
    std::string const pipe = root.path() + "/pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(QuaskTesting::endOf([&] {
                  alarm(10);
                  afterNextLook = [&] { std::rename(pipe.c_str(), path.c_str()); };
                  std::string failure;
                  bool const isOpen = Mem::RegularFile::openForReading(path, failure).isOpen();
                  return !isOpen && !afterNextLook && failure == "Not a regular file" ? 7 : 1;
              }),
              7);
}

}  // namespace
