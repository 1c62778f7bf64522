#include "zu/foundation/internal/state_file.h"

#include <cstdlib>

#if defined(_WIN32)

#include <fstream>

namespace zu::internal {

void AppendToStateFile(char const* szName, std::string const& strText) {
  char const* const szFolder = std::getenv("LOCALAPPDATA");
  if (szFolder == nullptr || *szFolder == '\0') return;
  std::ofstream(std::string(szFolder) + "\\" + szName, std::ios::app | std::ios::binary) << strText;
}

}  // namespace zu::internal

#else

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zu::internal {
namespace {

// The folder of an environment variable; empty unless that names one from the root.
std::string Folder(char const* szVariable) {
  char const* const szFolder = std::getenv(szVariable);
  return szFolder && *szFolder == '/' ? szFolder : "";
}

std::string StateFolder() {
  const std::string strState = Folder("XDG_STATE_HOME");
  if (!strState.empty()) {
    ::mkdir(strState.c_str(), 0700);
    return strState;
  }
  const std::string strHome = Folder("HOME");
  if (strHome.empty()) return "";
  ::mkdir((strHome + "/.local").c_str(), 0700);
  ::mkdir((strHome + "/.local/state").c_str(), 0700);
  return strHome + "/.local/state";
}

bool IsOwnFile(int iFile) {
  struct stat status;
  return ::fstat(iFile, &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == ::geteuid();
}

}  // namespace

void AppendToStateFile(char const* szName, std::string const& strText) {
  const std::string strFolder = StateFolder();
  if (strFolder.empty()) return;
  // Without O_NONBLOCK a pipe put at that place would hold the caller.
  const int iFlags = O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK;
  const int iFile = ::open((strFolder + "/" + szName).c_str(), iFlags, 0600);
  if (iFile < 0) return;
  if (IsOwnFile(iFile)) {
    // A line is written as one piece or, on a full disk, as far as it goes: nobody is told.
    [[maybe_unused]] const auto nWritten = ::write(iFile, strText.data(), strText.size());
  }
  ::close(iFile);
}

}  // namespace zu::internal

#endif
