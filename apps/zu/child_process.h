// Other runs of this program, several at a time.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace cli {

struct ChildEnd {
  pid_t pid = 0;
  int iCode = 0;  // exit code; -1 where a signal ended it
  int iSignal = 0;
};

// Children that still run when the object ends are ended, and waited for.
class ChildProcesses {
 public:
  ChildProcesses() = default;
  ~ChildProcesses();
  ChildProcesses(const ChildProcesses&) = delete;
  ChildProcesses& operator=(const ChildProcesses&) = delete;

  // Starts this program with these words; standard input is empty, output and messages go to
  // files, which are made anew. A single thread computes in it where bOneThread says so and nobody
  // has set another number. Throws CommandError (cannot write).
  pid_t Start(const std::vector<std::string>& words, const std::string& strOutput,
              const std::string& strMessages, bool bOneThread);
  std::size_t Count() const { return m_running.size(); }
  // Waits for one of them.
  ChildEnd Wait();

 private:
  std::vector<pid_t> m_running;
};

}  // namespace cli
