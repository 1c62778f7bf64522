#include "zu/project/internal/append_file.h"

#include <cerrno>
#include <cstddef>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

#include <filesystem>
#else
#include <fcntl.h>
#include <unistd.h>
#endif

namespace zu::internal {

#ifdef _WIN32

int OpenForAppending(const char* szPath) {
  if (szPath == nullptr) {
    errno = EINVAL;
    return -1;
  }
  const auto* const szUtf8 = reinterpret_cast<const char8_t*>(szPath);
  return _wopen(std::filesystem::path(szUtf8).c_str(), _O_RDWR | _O_APPEND | _O_CREAT | _O_BINARY,
                _S_IREAD | _S_IWRITE);
}

void CloseAppended(int iFile) { _close(iFile); }

bool EndsWithLineEnd(int iFile) {
  char cLast = '\n';
  return _lseeki64(iFile, -1, SEEK_END) < 0 || _read(iFile, &cLast, 1) < 1 || cLast == '\n';
}

bool AppendBytes(int iFile, const std::string& strBytes) {
  const auto uSize = static_cast<unsigned>(strBytes.size());
  return _write(iFile, strBytes.data(), uSize) == static_cast<int>(uSize);
}

bool SyncAppended(int iFile) { return _commit(iFile) == 0; }

#else

namespace {

// The name of a new file is to outlast a crash, too.
void SyncFolderOf(const std::string& strPath) {
  const std::size_t uSlash = strPath.rfind('/');
  const std::string strFolder = uSlash == strPath.npos ? "." : strPath.substr(0, uSlash + 1);
  const int iFolder = open(strFolder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (iFolder < 0) return;
  fsync(iFolder);
  close(iFolder);
}

}  // namespace

int OpenForAppending(const char* szPath) {
  constexpr mode_t kMode = 0666;  // less what the umask takes
  if (szPath == nullptr) {
    errno = EINVAL;
    return -1;
  }
  constexpr int kFlags = O_RDWR | O_APPEND | O_CLOEXEC;
  int iFile = open(szPath, kFlags);
  if (iFile >= 0 || errno != ENOENT) return iFile;
  iFile = open(szPath, kFlags | O_CREAT, kMode);
  if (iFile >= 0) SyncFolderOf(szPath);
  return iFile;
}

void CloseAppended(int iFile) { close(iFile); }

bool EndsWithLineEnd(int iFile) {
  char cLast = '\n';
  const off_t iEnd = lseek(iFile, 0, SEEK_END);
  return iEnd <= 0 || pread(iFile, &cLast, 1, iEnd - 1) < 1 || cLast == '\n';
}

bool AppendBytes(int iFile, const std::string& strBytes) {
  ssize_t iDone = 0;
  do {
    iDone = write(iFile, strBytes.data(), strBytes.size());
  } while (iDone < 0 && errno == EINTR);
  if (iDone >= 0 && static_cast<std::size_t>(iDone) < strBytes.size()) errno = ENOSPC;
  return iDone == static_cast<ssize_t>(strBytes.size());
}

bool SyncAppended(int iFile) { return fsync(iFile) == 0; }

#endif

}  // namespace zu::internal
