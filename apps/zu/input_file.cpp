#include "input_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <utility>
#include <vector>

#include "exit_code.h"
#include "nearest_word.h"
#include "output_file.h"

namespace cli {
namespace {

constexpr size_t kMostNames = 1000;  // of a folder that is looked through for a name like it

class Descriptor {
 public:
  explicit Descriptor(int fd) : m_fd(fd) {}
  ~Descriptor() {
    if (m_fd >= 0) close(m_fd);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int Get() const { return m_fd; }
  int Release() { return std::exchange(m_fd, -1); }

 private:
  int m_fd;
};

bool IsNullDevice(const struct stat& status) {
  struct stat null = {};
  return S_ISCHR(status.st_mode) && stat("/dev/null", &null) == 0 && null.st_rdev == status.st_rdev;
}

// A pipe gives its bytes once: those that were read, by device and number.
bool IsFirstReading(const struct stat& status) {
  static std::vector<std::pair<dev_t, ino_t>> g_read;
  const std::pair<dev_t, ino_t> pipe(status.st_dev, status.st_ino);
  if (std::find(g_read.begin(), g_read.end(), pipe) != g_read.end()) return false;
  g_read.push_back(pipe);
  return true;
}

const char* SpoolFolder() {
  const char* const szFolder = std::getenv("TMPDIR");
  return szFolder != nullptr && *szFolder != '\0' ? szFolder : "/tmp";
}

// A file without a name: nothing of it can be left behind. -1 with errno set.
int OpenSpool() {
  const int fd = open(SpoolFolder(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
  if (fd >= 0 || (errno != EOPNOTSUPP && errno != EISDIR)) return fd;
  std::string strPath = std::string(SpoolFolder()) + "/zu-XXXXXX";
  const int fdNamed = mkostemp(strPath.data(), O_CLOEXEC);
  if (fdNamed >= 0) unlink(strPath.c_str());
  return fdNamed;
}

// Half of what is free: an endless input shall not fill the disk of others.
unsigned long long SpoolLimit(int fd) {
  struct statvfs disk = {};
  if (fstatvfs(fd, &disk) != 0) return ~0ULL;
  return static_cast<unsigned long long>(disk.f_bavail) * disk.f_frsize / 2;
}

// A further line, "did you mean points.coo?", where the folder has a file of nearly that name.
std::string NearestFile(const std::string& strPath) {
  const std::filesystem::path path(strPath);
  const std::filesystem::path folder = path.has_parent_path() ? path.parent_path() : ".";
  std::error_code error;
  std::vector<std::string> names;
  for (std::filesystem::directory_iterator i(folder, error), end; !error && i != end;
       i.increment(error)) {
    if (names.size() == kMostNames) return "";
    names.push_back(i->path().filename().string());
  }
  const std::string strNearest = NearestWord(path.filename().string(), names);
  if (strNearest.empty()) return "";
  return "\ndid you mean " + (path.parent_path() / strNearest).string() + "?";
}

ssize_t ReadSome(int fd, char* pBuffer, size_t uSize) {
  for (;;) {
    const ssize_t n = read(fd, pBuffer, uSize);
    if (n >= 0 || errno != EINTR) return n;
  }
}

}  // namespace

std::string NameInMessages(const std::string& strPath) {
  return strPath == "-" ? "standard input" : strPath;
}

InputFile::InputFile(const std::string& strPath, const char* szNeeded)
    : m_strPath(strPath), m_strName(NameInMessages(strPath)), m_szNeeded(szNeeded) {
  const bool bStandard = strPath == "-";
  Descriptor input(bStandard ? dup(STDIN_FILENO) : open(strPath.c_str(), O_RDONLY | O_CLOEXEC));
  if (input.Get() < 0) {
    if (errno == ENOENT || errno == ENOTDIR) {
      throw CommandError(kBadInput, m_strName + ": no such file; " + szNeeded + " is needed" +
                                        NearestFile(strPath));
    }
    Fail(errno == ENXIO ? "is a socket or device without data"
                        : std::string("cannot be read (") + std::strerror(errno) + ")");
  }
  struct stat status = {};
  if (fstat(input.Get(), &status) != 0) Fail("cannot be read");
  if (S_ISDIR(status.st_mode)) Fail("is a folder");
  const bool bTerminal = isatty(input.Get()) == 1;
  if ((S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode)) && !bTerminal && !IsNullDevice(status)) {
    Fail("is a device, not a file");
  }
  if (S_ISREG(status.st_mode) && !bStandard) return;
  if (!IsNullDevice(status) && !IsFirstReading(status)) {
    throw CommandError(kUsage, m_strName +
                                   ": has been read already; two files, or two pipes, would be "
                                   "right");
  }
  Spool(input.Get());
}

InputFile::~InputFile() {
  if (m_fd >= 0) close(m_fd);
}

void InputFile::Spool(int fd) {
  const auto fail = [this](ExitCode eCode, const std::string& strWhat) {
    throw CommandError(eCode, m_strName + ": " + strWhat + "; TMPDIR (" + SpoolFolder() +
                                  ") keeps what pipes give,\na folder there with more room, or a "
                                  "file as input, would be right");
  };
  Descriptor spool(OpenSpool());
  if (spool.Get() < 0) {
    fail(kCannotWrite, std::string("cannot be kept (") + std::strerror(errno) + ")");
  }
  const unsigned long long uLimit = SpoolLimit(spool.Get());
  unsigned long long uSize = 0;
  std::vector<char> buffer(1 << 18);
  for (;;) {
    const ssize_t n = ReadSome(fd, buffer.data(), buffer.size());
    if (n < 0) Fail(std::string("cannot be read (") + std::strerror(errno) + ")");
    if (n == 0) break;
    uSize += static_cast<unsigned long long>(n);
    if (uSize > uLimit) fail(kBadInput, "no end within " + std::to_string(uSize >> 20) + " MB");
    if (!WriteAll(spool.Get(), buffer.data(), static_cast<size_t>(n))) {
      fail(kCannotWrite, std::string("cannot be kept (") + std::strerror(errno) + ")");
    }
  }
  m_fd = spool.Release();
  m_strPath = "/proc/self/fd/" + std::to_string(m_fd);
}

std::string InputFile::Text() const {
  const Descriptor file(open(m_strPath.c_str(), O_RDONLY | O_CLOEXEC));
  struct stat status = {};
  if (file.Get() < 0 || fstat(file.Get(), &status) != 0) {
    Fail(std::string("cannot be read (") + std::strerror(errno) + ")");
  }
  // One byte more than the file has, so that its end is seen without growing. The size is a hint
  // only: files of the kernel have none.
  std::string strText(static_cast<size_t>(status.st_size) + 1, '\0');
  size_t uFilled = 0;
  for (;;) {
    const ssize_t n = ReadSome(file.Get(), strText.data() + uFilled, strText.size() - uFilled);
    if (n < 0) Fail(std::string("cannot be read (") + std::strerror(errno) + ")");
    if (n == 0) break;
    uFilled += static_cast<size_t>(n);
    if (uFilled == strText.size()) strText.resize(std::max<size_t>(2 * uFilled, 1 << 16));
  }
  strText.resize(uFilled);
  return strText;
}

void InputFile::Fail(const std::string& strWhat) const {
  throw CommandError(kBadInput, m_strName + ": " + strWhat + "; " + m_szNeeded + " is needed");
}

}  // namespace cli
