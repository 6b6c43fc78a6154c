#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <sys/resource.h>

namespace QuaskTesting {

// The names in a directory in the order of the file system, without "." and "..".
std::vector<std::string> namesInOrder(std::string const& directory);

// The descriptors that this process has open.
std::size_t openDescriptors();

// The descriptor on which this process has `path` open, or -1.
int descriptorOf(std::string const& path);

// From now on the directory that is open on `descriptor` cannot be read: ENOTDIR.
void makeUnreadable(int descriptor);

// While it lives, this process can open `count` more descriptors. Sanitizers need some to look at
// an object for the first time, so a test does what it limits once without the limit.
class DescriptorLimit
{
public:
    explicit DescriptorLimit(unsigned count);
    DescriptorLimit(DescriptorLimit const&) = delete;
    DescriptorLimit& operator=(DescriptorLimit const&) = delete;
    ~DescriptorLimit();

private:
    rlimit former_{};
};

// While it lives, the permissions of files hold for this process even if it was started by root.
class OrdinaryUser
{
public:
    OrdinaryUser();
    OrdinaryUser(OrdinaryUser const&) = delete;
    OrdinaryUser& operator=(OrdinaryUser const&) = delete;
    ~OrdinaryUser();

    // False where root cannot become anybody else.
    bool succeeded() const;

private:
    bool wasRoot_;
};

}  // namespace QuaskTesting
