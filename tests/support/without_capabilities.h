#pragma once

#include <initializer_list>

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace QuaskTesting {

// While it lives, this process does without some of root's privileges (CAP_...). One that is not
// root's has none to lose.
class WithoutCapabilities
{
public:
    explicit WithoutCapabilities(std::initializer_list<int> capabilities)
    {
        syscall(SYS_capget, &header_, before_);
        __user_cap_data_struct fewer[2] = {before_[0], before_[1]};
        for (int const capability : capabilities) {
            fewer[capability / 32].effective &= ~(1u << (capability % 32));
        }
        syscall(SYS_capset, &header_, fewer);
    }
    WithoutCapabilities(WithoutCapabilities const&) = delete;
    WithoutCapabilities& operator=(WithoutCapabilities const&) = delete;
    ~WithoutCapabilities() { syscall(SYS_capset, &header_, before_); }

private:
    __user_cap_header_struct header_{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct before_[2] = {};
};

}  // namespace QuaskTesting
