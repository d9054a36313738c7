// A simulated Windows for tests: a deterministic machine that stands in for the real one.
//
// A test makes a System, sets it up, loads the library on it and looks at what happened:
//
//     System system(os::winXp);
//     system.addPrinter("Office").startLog();
//     system.desktop.add("any class", "DEMODRAL - Office", {2, 1});  // answers 2, then 1
//     LoadedLibrary library;                            // the DLL as it ships; or, for the
//     sources: SimulatedProcess simulated;                       //   replaces the test program's
//     own imports VKDATA record{}; EXPECT_EQ(library.launchXFiles("Office", "LPT1:", &record), 0);
//     expectMessages(system, {"+VOKLaunchXFiles", "-VOKLaunchXFiles", …});
//     expectCallsOf(system, "WinExec", {R"(WinExec("C:\…", 5) = 33)"});
//     expectNoLeaks(system, {"printer#1"});
//
// Declare the System first: it has to outlive the library. Names of handles are kind and number
// ("file#2"); handleOf(Kind::file, 2) is its value, logText of it what a log line shows.
//
// - What the machine has: system.registry, files, mutexes, spooler, desktop, processes, sessions,
//   pipes, modules, clock; all start empty, except for the active computer name "HOST".
// - Time stands still, but for Sleep, WaitForInputIdle and waits for other processes' mutexes,
//   which move it. With it standing still every option of the log is read anew at each use (a
//   reading of the same tick does not count as cached); clock.stepPerRead = 1 makes it move.
// - What was called: system.calls. GetTickCount, GetLastError and the like are counted; recordAlso
//   adds them to the record. calls.on = false for millions of calls.
// - What fails: system.faults.fail("CreateFileA", way, n) fails its n-th call from now in one of
//   the ways of failuresOf("CreateFileA"); faults.failCall(k) fails the k-th call of all. A sweep:
//       for (size_t k = 1;; ++k) {
//           System system(…); …; system.faults.failCall(k); …;
//           if (system.faults.fired() == 0) break;
//       }
// - What is watched: handles (expectNoLeaks), complaints (handles closed twice, waits that would
//   never end), system.sids, lockCounts(), buffers (greedyBuffers = true overwrites each buffer to
//   the size that the library gave).
// - The calls of the runtime that is linked into the library go to the real system: handles that
//   are not simulated, Sleep(0), modules other than kernel32.
// - Tests of the sources: the library's OsVersion was read when the test program started; make
//   one (vok::OsVersion();) to read the simulated system's. setLibraryModule gives the module that
//   the model prefix comes from; any handle will do.
// - Companions names and makes the windows, pipes and mutexes of a printer's two companions.
// - Threads may call at once; hooks (Window::reply, Processes::onStart, …) run without the lock.
#pragma once

#include "call.h"
#include "companions.h"
#include "expect.h"
#include "image.h"
#include "import_table.h"
#include "loaded_library.h"
#include "locks.h"
#include "real.h"
#include "simulated_process.h"
#include "substitutes.h"
#include "system.h"
