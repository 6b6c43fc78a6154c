#include "support/mem_shared.h"

#include <utility>

#include <sys/mman.h>

namespace Mem {
namespace {

std::string textOf(char const* text)
{
    return text == nullptr ? std::string() : std::string(text);
}

}  // namespace

Shared::Shared(char const* directory, char const* name, bool, unsigned /*flags*/, bool)
    : prefix(textOf(directory)), filename(prefix + "/" + textOf(name))
{}

Shared::~Shared() = default;

void* Shared::attach(unsigned bytes, Mode mode)
{
    if (address != nullptr || mode != Mode::read) {
        return nullptr;
    }
    RegularFile opened = RegularFile::openForReading(filename, failure);
    if (!opened.isOpen()) {
        return nullptr;
    }
    if (roundUpToPages(opened.size()) < bytes) {
        failure = "the file is too short";
        return nullptr;
    }
    int const descriptor = opened.descriptor();
    if (map(bytes, PROT_READ, std::move(opened)) == nullptr) {
        return nullptr;
    }
    watched.watch(filename, descriptor, address, bytes);
    return address;
}

unsigned Shared::memSize() const
{
    return file.isOpen() ? file.size() : RegularFile::examine(filename, failure).size();
}

bool Shared::isCurrent() const
{
    return !file.isOpen() || file.isNamed(filename);
}

}  // namespace Mem
