#include "support/watched_mapping.h"

#include <array>
#include <csignal>
#include <cstdint>
#include <string_view>

#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include "base/standard_output.h"
#include "support/mem_local.h"

namespace Mem {

// The list, and what its signal handler does. The handler runs in this thread at a load from a
// mapping, never while the list is being changed.
struct WatchedMappings
{
    static void add(WatchedMapping& mapping)
    {
        mapping.next_ = first;
        if (first != nullptr) {
            first->previous_ = &mapping;
        }
        first = &mapping;
    }

    static void remove(WatchedMapping& mapping)
    {
        (mapping.previous_ != nullptr ? mapping.previous_->next_ : first) = mapping.next_;
        if (mapping.next_ != nullptr) {
            mapping.next_->previous_ = mapping.previous_;
        }
        mapping.previous_ = mapping.next_ = nullptr;
    }

    static std::uintptr_t offsetIn(WatchedMapping const& mapping, void const* address)
    {
        return reinterpret_cast<std::uintptr_t>(address) -
               reinterpret_cast<std::uintptr_t>(mapping.address_);
    }

    static WatchedMapping* at(void const* address)
    {
        for (WatchedMapping* mapping = first; mapping != nullptr; mapping = mapping->next_) {
            if (offsetIn(*mapping, address) < roundUpToPages(mapping->bytes_)) {
                return mapping;
            }
        }
        return nullptr;
    }

    // Puts a page of zeros in the place of the one that `address` is in.
    static bool replacePage(WatchedMapping& mapping, void const* address)
    {
        std::uintptr_t const inPage = reinterpret_cast<std::uintptr_t>(address) & (pageSize_ - 1);
        void* const page = const_cast<char*>(static_cast<char const*>(address) - inPage);
        mapping.hasUnreadablePage_ = true;
        hasReplaced = true;
        return mmap(page, pageSize_, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0) !=
               MAP_FAILED;
    }

    // Maps the files whose pages were replaced as they were before.
    static void putBack()
    {
        for (WatchedMapping* mapping = first; mapping != nullptr; mapping = mapping->next_) {
            if (!mapping->hasUnreadablePage_) {
                continue;
            }
            mapping->hasUnreadablePage_ = false;
            if (mmap(const_cast<void*>(mapping->address_), mapping->bytes_, PROT_READ,
                     MAP_SHARED | MAP_FIXED, mapping->descriptor_, 0) == MAP_FAILED) {
                endRun(*mapping, false);
            }
        }
        hasReplaced = false;
    }

    static bool isCutShort(WatchedMapping const& mapping, void const* address)
    {
        struct stat status = {};
        return fstat(mapping.descriptor_, &status) == 0 &&
               offsetIn(mapping, address) >= static_cast<std::uintptr_t>(status.st_size);
    }

    [[noreturn]] static void endRun(WatchedMapping const& mapping, bool isCutShort);
    static void onBusError(int signal, siginfo_t* info, void* context);
    static void installHandler();

    static inline WatchedMapping* first = nullptr;
    static inline bool volatile readsAsZeros = false;  // read by the signal handler
    static inline bool volatile hasReplaced = false;   // set by the signal handler
};

namespace {

iovec piece(std::string_view text)
{
    return {const_cast<char*>(text.data()), text.size()};
}

}  // namespace

void WatchedMappings::endRun(WatchedMapping const& mapping, bool isCutShort)
{
    Dovan::StandardOutput::writeRemainder();
    std::array const line{
        piece("Quask table file "), piece(mapping.path_),
        piece(isCutShort ? " was cut short while it was being read\n" : " could not be read\n")};
    [[maybe_unused]] ssize_t const written = writev(STDERR_FILENO, line.data(), line.size());
    _exit(1);
}

void WatchedMappings::onBusError(int signal, siginfo_t* info, void* /*context*/)
{
    bool const isFault = info->si_code > 0;  // else another process sent it
    WatchedMapping* const mapping = isFault ? at(info->si_addr) : nullptr;
    if (mapping == nullptr) {
        // Again after the return, without a handler.
        static_cast<void>(std::signal(signal, SIG_DFL));
        static_cast<void>(raise(signal));
        return;
    }
    if (readsAsZeros && replacePage(*mapping, info->si_addr)) {
        return;
    }
    endRun(*mapping, isCutShort(*mapping, info->si_addr));
}

void WatchedMappings::installHandler()
{
    struct sigaction action = {};
    action.sa_sigaction = onBusError;
    action.sa_flags = SA_SIGINFO;
    sigemptyset(&action.sa_mask);
    sigaction(SIGBUS, &action, nullptr);
    // A parent may have left it blocked; the kernel would then end the process without a word.
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGBUS);
    sigprocmask(SIG_UNBLOCK, &blocked, nullptr);
}

void WatchedMapping::watch(std::string const& path, int descriptor, void const* address,
                           std::size_t bytes)
{
    [[maybe_unused]] static bool const installed = (WatchedMappings::installHandler(), true);
    stop();
    path_ = path;
    descriptor_ = descriptor;
    address_ = address;
    bytes_ = bytes;
    hasUnreadablePage_ = false;
    isInList_ = true;
    WatchedMappings::add(*this);
}

void WatchedMapping::stop()
{
    if (isInList_) {
        WatchedMappings::remove(*this);
        isInList_ = false;
    }
}

UnreadableAsZeros::UnreadableAsZeros()
{
    WatchedMappings::readsAsZeros = true;
}

UnreadableAsZeros::~UnreadableAsZeros()
{
    WatchedMappings::readsAsZeros = false;
    WatchedMappings::hasReplaced = false;
}

ZerosForNow::ZerosForNow()
{
    WatchedMappings::readsAsZeros = true;
}

ZerosForNow::~ZerosForNow()
{
    WatchedMappings::readsAsZeros = false;
    if (WatchedMappings::hasReplaced) {
        WatchedMappings::putBack();
    }
}

bool ZerosForNow::hasReplaced() const
{
    return WatchedMappings::hasReplaced;
}

}  // namespace Mem
