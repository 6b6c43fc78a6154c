// Reading that fails, and what it leaves behind.

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include "support/recording_handler.h"
#include "support/util.h"

namespace {

namespace Util = Quask::Util;

// A file of which a page can be read, and nothing more: this process's memory before a hole.
class MemoryBeforeAHole
{
public:
    MemoryBeforeAHole() : file_(open("/proc/self/mem", O_RDONLY | O_CLOEXEC))
    {
        auto const size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        auto* const pages = static_cast<char*>(
            mmap(nullptr, 2 * size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        munmap(pages + size, size);
        page_ = pages;
        lseek(file_, reinterpret_cast<off_t>(page_), SEEK_SET);
    }
    MemoryBeforeAHole(MemoryBeforeAHole const&) = delete;
    MemoryBeforeAHole& operator=(MemoryBeforeAHole const&) = delete;
    ~MemoryBeforeAHole() { close(file_); }

    int descriptor() const { return file_; }

private:
    int file_;
    void* page_;
};

TEST(ReadToEnd, ShowsNothingOfWhatCannotBeReadToItsEnd)
{
    MemoryBeforeAHole const memory;
    char byte = 1;
    ASSERT_EQ(read(memory.descriptor(), &byte, 1), 1);
    EXPECT_EQ(byte, 0);
    EXPECT_EQ(Util::readToEnd(memory.descriptor(), 1 << 20), "");
}

TEST(ReadingACommandLine, LeavesNoDescriptorOpen)
{
    QuaskTesting::RecordingHandler handler;
    int const before = open("/dev/null", O_RDONLY | O_CLOEXEC);
    close(before);
    EXPECT_NE(Util::readCmdline(handler, getpid()), "");
    int const after = open("/dev/null", O_RDONLY | O_CLOEXEC);
    close(after);
    EXPECT_EQ(after, before);
}

}  // namespace
