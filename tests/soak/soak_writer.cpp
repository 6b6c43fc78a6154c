#include "soak/soak_writer.h"

#include <csignal>
#include <exception>
#include <iostream>
#include <new>
#include <stdexcept>

#include <sched.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

namespace QuaskTesting {
namespace {

// A table grows by one element after this many changes, so that scans meet it at all sizes.
constexpr int changesPerElement = 16;
constexpr int changesPerReport = 1024;

void stayOn(int processor)
{
    if (processor < 0) {
        return;
    }
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(static_cast<std::size_t>(processor), &set);
    sched_setaffinity(0, sizeof set, &set);
}

}  // namespace

SoakWriter::SoakWriter(std::string const& directory, HotTable const& table, int processor)
{
    void* const memory =
        mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        throw std::runtime_error("no memory to share with a writer");
    }
    shared_ = new (memory) Shared{};
    pid_t const parent = getpid();
    pid_ = fork();
    if (pid_ == 0) {
        // Interrupted together with its parent, it leaves the end to that one.
        signal(SIGINT, SIG_IGN);
        signal(SIGTERM, SIG_IGN);
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent) {
            _exit(1);
        }
        stayOn(processor);
        work(*shared_, directory, table);
    }
    while (!shared_->ready.load(std::memory_order_acquire)) {
        if (!isAlive()) {
            munmap(shared_, sizeof(Shared));
            throw std::runtime_error("a writer cannot make its table");
        }
        usleep(1000);
    }
}

SoakWriter::~SoakWriter()
{
    if (pid_ > 0) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    munmap(shared_, sizeof(Shared));
}

double SoakWriter::processorSeconds() const
{
    clockid_t clock{};
    timespec time{};
    if (clock_getcpuclockid(pid_, &clock) != 0 || clock_gettime(clock, &time) != 0) {
        return 0;
    }
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

bool SoakWriter::isAlive() const
{
    siginfo_t ended{};
    return pid_ > 0 &&
           waitid(P_PID, static_cast<id_t>(pid_), &ended, WEXITED | WNOHANG | WNOWAIT) == 0 &&
           ended.si_pid == 0;
}

void SoakWriter::work(Shared& shared, std::string const& directory, HotTable const& table)
{
    try {
        HotWriter writer(directory, table);
        shared.ready.store(true, std::memory_order_release);
        bool grows = table.maxSlots != 0;
        for (;;) {
            for (int i = 0; i < changesPerReport; ++i) {
                writer.step();
                if (grows && i % changesPerElement == 0) {
                    grows = writer.addOne();
                    shared.full.store(!grows, std::memory_order_relaxed);
                }
            }
            shared.changes.fetch_add(changesPerReport, std::memory_order_relaxed);
        }
    } catch (std::exception const& problem) {
        std::cerr << "A writer failed: " << problem.what() << std::endl;
    }
    _exit(1);
}

}  // namespace QuaskTesting
