#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace QuaskTesting {

// The names in a directory in the order of the file system, without "." and "..".
std::vector<std::string> namesInOrder(std::string const& directory);

// The descriptors that this process has open.
std::size_t openDescriptors();

// The descriptor on which this process has `path` open, or -1.
int descriptorOf(std::string const& path);

// From now on the directory that is open on `descriptor` cannot be read: ENOTDIR.
void makeUnreadable(int descriptor);

// While it lives, the code under test can open `count` more directories; then no descriptor is
// left. (Everything else has all it needs: the sanitizers take descriptors to look at objects.)
class DescriptorLimit
{
public:
    explicit DescriptorLimit(unsigned count);
    DescriptorLimit(DescriptorLimit const&) = delete;
    DescriptorLimit& operator=(DescriptorLimit const&) = delete;
    ~DescriptorLimit();
};

// While it lives, the code under test reads entries of this name without their type.
class UnknownType
{
public:
    explicit UnknownType(std::string const& name);
    UnknownType(UnknownType const&) = delete;
    UnknownType& operator=(UnknownType const&) = delete;
    ~UnknownType();
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
