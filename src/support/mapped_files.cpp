#include "support/mapped_files.h"

#include <array>
#include <csignal>
#include <cstdint>
#include <string_view>

#include <sys/uio.h>
#include <unistd.h>

#include "base/standard_output.h"
#include "support/mem_local.h"

namespace Mem::MappedFiles {
namespace {

struct MappedFile
{
    char const* path;
    void const* address;  // null for an entry that is free
    std::size_t size;
};

// Read by the signal handler, which runs in this thread at a load from a mapping, never inside
// add() or remove().
std::array<MappedFile, 16> mappedFiles{};

MappedFile const* fileAt(void const* address)
{
    auto const faulty = reinterpret_cast<std::uintptr_t>(address);
    for (MappedFile const& file : mappedFiles) {
        auto const start = reinterpret_cast<std::uintptr_t>(file.address);
        if (start != 0 && faulty - start < roundUpToPages(file.size)) {
            return &file;
        }
    }
    return nullptr;
}

iovec piece(std::string_view text)
{
    return {const_cast<char*>(text.data()), text.size()};
}

void onBusError(int signal, siginfo_t* info, void* /*context*/)
{
    MappedFile const* const file = fileAt(info->si_addr);
    if (file == nullptr) {
        // Back to the same instruction, this time without a handler.
        static_cast<void>(std::signal(signal, SIG_DFL));
        return;
    }
    Dovan::StandardOutput::writeRemainder();
    std::array const line{piece("Quask table file "), piece(file->path),
                          piece(" was cut short while it was being read\n")};
    [[maybe_unused]] ssize_t const written = writev(STDERR_FILENO, line.data(), line.size());
    _exit(1);
}

void installHandler()
{
    struct sigaction action
    {};
    action.sa_sigaction = onBusError;
    action.sa_flags = SA_SIGINFO;
    sigemptyset(&action.sa_mask);
    sigaction(SIGBUS, &action, nullptr);
}

}  // namespace

void add(char const* path, void const* address, std::size_t size)
{
    [[maybe_unused]] static bool const installed = (installHandler(), true);
    for (MappedFile& file : mappedFiles) {
        if (file.address == nullptr) {
            file = {path, address, size};
            return;
        }
    }
}

void remove(void const* address)
{
    for (MappedFile& file : mappedFiles) {
        if (file.address == address) {
            file = {};
            return;
        }
    }
}

}  // namespace Mem::MappedFiles
