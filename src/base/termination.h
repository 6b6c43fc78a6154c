#pragma once

// How SIGHUP, SIGINT and SIGTERM end the process: by that signal, but with time to finish its
// output first. One thread.
namespace Dovan::Termination {

// From now on the first of these signals calls `complete` from its handler, that is at any point of
// the program. If it returns true, the process ends by the signal. If it returns false, the program
// goes on to where it calls endIfDue(). In any case it ends a second after the signal, wherever it
// is then, and at once by a second one. A signal that is ignored stays ignored.
void prepare(bool (*complete)());

// Ends the process by the signal that was put off, if there is one.
void endIfDue();

}  // namespace Dovan::Termination
