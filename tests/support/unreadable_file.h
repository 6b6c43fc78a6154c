#pragma once

#include <string>

#include <linux/capability.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace QuaskTesting {

// While it lives, this process may examine the file but not open it: its permissions say so, and
// the privileges by which root need not care are laid down.
class UnreadableFile
{
public:
    explicit UnreadableFile(std::string const& path)
    {
        chmod(path.c_str(), 0);
        syscall(SYS_capget, &header_, before_);
        __user_cap_data_struct fewer[2] = {before_[0], before_[1]};
        fewer[0].effective &= ~(1u << CAP_DAC_OVERRIDE | 1u << CAP_DAC_READ_SEARCH);
        syscall(SYS_capset, &header_, fewer);
    }
    UnreadableFile(UnreadableFile const&) = delete;
    UnreadableFile& operator=(UnreadableFile const&) = delete;
    ~UnreadableFile() { syscall(SYS_capset, &header_, before_); }

private:
    __user_cap_header_struct header_{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct before_[2] = {};
};

}  // namespace QuaskTesting
