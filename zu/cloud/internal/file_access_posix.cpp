#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "zu/cloud/internal/file_access.h"
#include "zu/foundation/unicode.h"

namespace {

int Descriptor(std::intptr_t hFile) { return static_cast<int>(hFile); }

}  // namespace

std::intptr_t ZuFileAccess::Open(const char* szPath) {
  if (!szPath) return -1;
  int fd = -1;
  do {
    // Without waiting: a pipe that nobody writes to must not hold the caller.
    fd = ::open(szPath, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  } while (fd < 0 && errno == EINTR);
  if (fd < 0) return -1;

  struct stat info = {};
  if (::fstat(fd, &info) != 0 || S_ISDIR(info.st_mode)) {
    ::close(fd);
    return -1;
  }
#ifdef POSIX_FADV_SEQUENTIAL
  ::posix_fadvise(fd, 0, 0, POSIX_FADV_SEQUENTIAL);
#endif
  return fd;
}

std::intptr_t ZuFileAccess::Open(const wchar_t* szPath) { return Open(UniToAnsi(szPath)()); }

std::uint64_t ZuFileAccess::Size(std::intptr_t hFile) {
  struct stat info = {};
  if (::fstat(Descriptor(hFile), &info) != 0 || !S_ISREG(info.st_mode)) return 0;
  return static_cast<std::uint64_t>(info.st_size);
}

// Another process may shorten a file under its mapping here; see file_buff.h.
const unsigned char* ZuFileAccess::Map(std::intptr_t, std::intptr_t* phMapping) {
  *phMapping = -1;
  return nullptr;
}

void ZuFileAccess::Unmap(const unsigned char*, std::intptr_t) {}

std::size_t ZuFileAccess::ReadAt(std::intptr_t hFile, std::uint64_t uPos, void* pTarget,
                                 std::size_t uSize) {
  std::size_t uDone = 0;
  while (uDone < uSize) {
    const ssize_t iRead = ::pread(Descriptor(hFile), static_cast<unsigned char*>(pTarget) + uDone,
                                  uSize - uDone, static_cast<off_t>(uPos + uDone));
    if (iRead < 0 && errno == EINTR) continue;
    if (iRead <= 0) break;
    uDone += static_cast<std::size_t>(iRead);
  }
  return uDone;
}

void ZuFileAccess::Close(std::intptr_t hFile) { ::close(Descriptor(hFile)); }
