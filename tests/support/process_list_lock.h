#pragma once

#include <stdexcept>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace QuaskTesting {

// Tests run at the same time, and each sees the processes of all. A test whose processes have table
// files mapped holds this lock shared; one that looks at the mappings of all tables, or whose
// processes disturb those that do, holds it alone. Released at the end, however the process ends.
class ProcessListLock
{
public:
    enum class Mode
    {
        shared = LOCK_SH,
        alone = LOCK_EX,
    };

    // Waits until the lock is free.
    explicit ProcessListLock(Mode mode) : directory_(open("/proc", O_RDONLY | O_CLOEXEC))
    {
        if (directory_ < 0 || flock(directory_, static_cast<int>(mode)) != 0) {
            throw std::runtime_error("cannot lock /proc");
        }
    }

    ProcessListLock(ProcessListLock const&) = delete;
    ProcessListLock& operator=(ProcessListLock const&) = delete;
    ~ProcessListLock() { close(directory_); }

private:
    int directory_;
};

}  // namespace QuaskTesting
