#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include <sys/types.h>

#include "support/hot_writer.h"

namespace QuaskTesting {

// A process that makes a hot table and changes it without pause from the constructor's return to
// the object's end, on the processor with the number `processor` (-1: on any). A table with a
// maxSlots of its own also grows until it is full.
class SoakWriter
{
public:
    // Throws std::runtime_error when the table cannot be made.
    SoakWriter(std::string const& directory, HotTable const& table, int processor);
    SoakWriter(SoakWriter const&) = delete;
    SoakWriter& operator=(SoakWriter const&) = delete;
    ~SoakWriter();

    // Changes made so far, a thousand or so behind.
    std::uint64_t changes() const { return shared_->changes.load(std::memory_order_relaxed); }

    // Seconds that it had a processor.
    double processorSeconds() const;

    // True when the table has grown as far as it may.
    bool isFull() const { return shared_->full.load(std::memory_order_relaxed); }

    // False when it has died.
    bool isAlive() const;

private:
    // In memory of both processes.
    struct Shared
    {
        std::atomic<bool> ready;
        std::atomic<bool> full;
        std::atomic<std::uint64_t> changes;
    };

    [[noreturn]] static void work(Shared& shared, std::string const& directory,
                                  HotTable const& table);

    Shared* shared_;
    pid_t pid_ = -1;
};

}  // namespace QuaskTesting
