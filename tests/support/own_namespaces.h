#pragma once

namespace QuaskTesting {

// Puts the rest of the run into a new process that has namespaces of its own: it sees no processes
// but itself and those that it starts, in a /proc of its own, and may mount what it likes unseen by
// the rest of the machine. Every process of the new namespace ends with it, or with the old
// process.
//
// For the beginning of main(), before the process has threads: own_namespaces_main.cpp. Returns in
// the new process, with the user that the process had; the old process waits for the new
// one and ends with its status. Root needs the right to mount; anyone else, user namespaces. Where
// the system allows neither, it returns in the old process, which goes on without.
void enterOwnNamespaces();

// Whether enterOwnNamespaces() succeeded. A test that looks at all processes, or mounts something,
// is skipped where it did not:
//
//     if (!QuaskTesting::inOwnNamespaces()) {
//         GTEST_SKIP() << QuaskTesting::noOwnNamespaces;
//     }
bool inOwnNamespaces();

inline constexpr char const* noOwnNamespaces = "the system allows no namespaces of the test's own";

}  // namespace QuaskTesting
