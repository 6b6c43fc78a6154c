// compare PAIRS null|pipe|FILE COMMAND_A ... -- COMMAND_B ...
//
// Runs two commands in turn, A B A B ..., after one run of each that does not count, with their
// standard output on /dev/null, in a pipe that another process empties, or in FILE, over what the
// run before has written: how long the system takes to find memory for new pages varies. Prints the
// median wall time of each in milliseconds and the median of the ratios A/B, pair by pair: what
// another load on the machine does to a run it mostly does to its partner, too.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace {

using Words = std::vector<char*>;

[[noreturn]] void fail(std::string const& what)
{
    std::fprintf(stderr, "compare: %s\n", what.c_str());
    std::exit(2);
}

pid_t start(Words words, int in, int out)
{
    words.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, out, STDOUT_FILENO);
    pid_t pid = 0;
    if (posix_spawnp(&pid, words[0], &actions, nullptr, words.data(), environ) != 0) {
        fail(std::string("cannot run ") + words[0]);
    }
    posix_spawn_file_actions_destroy(&actions);
    return pid;
}

void waitFor(pid_t pid, char const* name)
{
    int status = 0;
    if (waitpid(pid, &status, 0) != pid || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        fail(std::string(name) + " failed");
    }
}

int openOutput(std::string const& output, int flags)
{
    int const descriptor = open(output.c_str(), flags | O_CLOEXEC, 0600);
    return descriptor < 0 ? (fail("cannot open " + output), -1) : descriptor;
}

// The wall time of one run, in milliseconds; into a pipe, until its reader has seen the end.
double timeOf(Words const& words, std::string const& output)
{
    static int const null = openOutput("/dev/null", O_RDWR);
    int ends[2] = {-1, -1};
    pid_t reader = 0;
    int out = null;
    if (output == "pipe") {
        if (pipe2(ends, O_CLOEXEC) != 0) {
            fail("no pipe");
        }
        out = ends[1];
        static char cat[] = "cat";
        reader = start({cat}, ends[0], null);
        close(ends[0]);
    } else if (output != "null") {
        out = openOutput(output, O_WRONLY | O_CREAT);
    }
    auto const begin = std::chrono::steady_clock::now();
    pid_t const pid = start(words, null, out);
    if (out != null) {
        close(out);
    }
    waitFor(pid, words[0]);
    if (reader != 0) {
        waitFor(reader, "cat");
    }
    std::chrono::duration<double, std::milli> const time = std::chrono::steady_clock::now() - begin;
    return time.count();
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

}  // namespace

int main(int argc, char** argv)
{
    auto const separator = std::find_if(
        argv, argv + argc, [](char const* word) { return std::strcmp(word, "--") == 0; });
    if (argc < 6 || separator == argv + argc || separator < argv + 4 ||
        separator == argv + argc - 1) {
        fail("usage: compare PAIRS null|pipe|FILE COMMAND_A ... -- COMMAND_B ...");
    }
    int const pairs = std::atoi(argv[1]);
    std::string const output = argv[2];
    Words const a(argv + 3, separator);
    Words const b(separator + 1, argv + argc);
    std::vector<double> timesA;
    std::vector<double> timesB;
    std::vector<double> ratios;
    timeOf(a, output);
    timeOf(b, output);
    for (int i = 0; i < pairs; ++i) {
        timesA.push_back(timeOf(a, output));
        timesB.push_back(timeOf(b, output));
        ratios.push_back(timesA.back() / timesB.back());
    }
    std::printf("%.1f %.1f %.3f\n", median(timesA), median(timesB), median(ratios));
}
