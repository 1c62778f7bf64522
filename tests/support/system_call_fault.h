// Faults at one system call of another program: the call fails, or the program is killed before it.
//
// Only calls count that change files: creating and opening for writing, writing, renaming, syncing,
// changing the mode, removing. They are counted in the program's first thread, from its start.
#pragma once

#include <string>
#include <vector>

struct SystemCallFault {
  int iCall = -1;  // index of the call; -1: none, the calls are counted alone
  int iErrno = 0;  // the call's error; 0: the program is killed before the call
};

struct TracedRun {
  bool bTraced = false;  // false: this system lets nobody trace
  int iExit = -1;        // exit code; 128 + signal if a signal ended it
  std::vector<std::string> calls;
};

// Runs a program to its end, standard output and error to files.
TracedRun RunTraced(const std::vector<std::string>& command, const std::string& strStdin,
                    const std::string& strStdout, const std::string& strStderr,
                    SystemCallFault fault);
