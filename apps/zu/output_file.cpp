#include "output_file.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <locale>
#include <map>
#include <streambuf>
#include <vector>

#include "exit_code.h"
#include "interrupt.h"

namespace cli {

bool WriteAll(int fd, const char* pData, size_t uSize) {
  while (uSize > 0) {
    const ssize_t n = write(fd, pData, uSize);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) return false;
    pData += n;
    uSize -= static_cast<size_t>(n);
  }
  return true;
}

// Buffered writing to a descriptor that counts its bytes and keeps the first error.
class OutputFile::Buffer : public std::streambuf {
 public:
  explicit Buffer(int fd) : m_fd(fd), m_aBuffer(1 << 16) {
    setp(m_aBuffer.data(), m_aBuffer.data() + m_aBuffer.size());
  }

  int Error() const { return m_iErrno; }
  off_t Written() const { return m_iWritten; }

 protected:
  int_type overflow(int_type c) override {
    if (sync() != 0) return traits_type::eof();
    if (!traits_type::eq_int_type(c, traits_type::eof())) {
      *pptr() = traits_type::to_char_type(c);
      pbump(1);
    }
    return traits_type::not_eof(c);
  }

  int sync() override {
    const size_t uSize = static_cast<size_t>(pptr() - pbase());
    if (m_iErrno == 0 && !WriteAll(m_fd, pbase(), uSize)) m_iErrno = errno;
    if (m_iErrno == 0) m_iWritten += static_cast<off_t>(uSize);
    setp(m_aBuffer.data(), m_aBuffer.data() + m_aBuffer.size());
    return m_iErrno == 0 ? 0 : -1;
  }

 private:
  int m_fd;
  std::vector<char> m_aBuffer;
  off_t m_iWritten = 0;
  int m_iErrno = 0;
};

namespace {

std::string FolderOf(const std::string& strPath) {
  const size_t uSlash = strPath.rfind('/');
  if (uSlash == std::string::npos) return ".";
  return uSlash == 0 ? "/" : strPath.substr(0, uSlash);
}

// The file behind symbolic links, also where it is still to be made.
std::string BehindLinks(std::string strPath) {
  constexpr int kMostLinks = 40;  // as the system has it
  std::vector<char> target(PATH_MAX);
  for (int i = 0; i < kMostLinks; ++i) {
    const ssize_t n = readlink(strPath.c_str(), target.data(), target.size());
    if (n < 0) break;
    const std::string strTarget(target.data(), static_cast<size_t>(n));
    strPath = strTarget[0] == '/' ? strTarget : FolderOf(strPath) + "/" + strTarget;
  }
  return strPath;
}

bool NamesStandardOutput(const std::string& strPath) {
  for (const char* sz : {"-", "/dev/stdout", "/dev/fd/1", "/proc/self/fd/1"}) {
    if (strPath == sz) return true;
  }
  return false;
}

const char* TemporaryFolder() {
  const char* const szFolder = std::getenv("TMPDIR");
  return szFolder != nullptr && *szFolder != '\0' ? szFolder : "/tmp";
}

// ".coo" of "a/b.coo"; nothing for a name without one or with one of unusual length.
std::string EndingOf(const std::string& strPath) {
  const std::string strName = strPath.substr(strPath.rfind('/') + 1);
  const size_t uDot = strName.rfind('.');
  if (uDot == std::string::npos || uDot == 0 || strName.size() - uDot > 16) return "";
  return strName.substr(uDot);
}

}  // namespace

OutputFile::OutputFile(const std::string& strPath, bool bCreate)
    : m_bStandard(NamesStandardOutput(strPath)),
      m_strPath(strPath),
      m_strTarget(m_bStandard ? std::string() : BehindLinks(strPath)),
      m_strFolder(m_bStandard ? TemporaryFolder() : FolderOf(m_strTarget)) {
  if (!bCreate) {
    unsigned uMode = 0;
    CheckTarget(&uMode);
    return;
  }
  Create();
  m_pBuffer = std::make_unique<Buffer>(m_fd);
  m_pStream = std::make_unique<std::ostream>(m_pBuffer.get());
  m_pStream->imbue(std::locale::classic());
}

OutputFile::~OutputFile() {
  if (m_fd >= 0) close(m_fd);
  if (!m_strTemp.empty()) unlink(m_strTemp.c_str());
  ForgetUnfinishedFile(m_iSlot);
}

// True with its mode where there is an old file.
bool OutputFile::CheckTarget(unsigned* puMode) const {
  struct stat old = {}, folder = {};
  const bool bOld = stat(m_strTarget.c_str(), &old) == 0;
  if (!bOld && errno == ENOENT && stat(m_strFolder.c_str(), &folder) != 0) {
    Fail("cannot be written, its folder is missing; mkdir -p '" + m_strFolder + "' makes it", 0);
  }
  if (bOld && S_ISDIR(old.st_mode)) Fail("is a folder; name a file", 0);
  if (bOld && !S_ISREG(old.st_mode)) Fail("is no regular file; name a file", 0);
  if (bOld && access(m_strTarget.c_str(), W_OK) != 0) Fail("cannot be replaced", errno);
  if (access(m_strFolder.c_str(), W_OK | X_OK) != 0) Fail("cannot be written", errno);
  *puMode = old.st_mode & 07777;
  return bOld;
}

void OutputFile::Create() {
  unsigned uOldMode = 0;
  const bool bOld = CheckTarget(&uOldMode);

  const std::string strEnding = EndingOf(m_strTarget);
  std::string strTemp = m_strFolder + "/.zu-XXXXXX" + strEnding;
  const SignalPause pause;
  m_fd = mkstemps(strTemp.data(), static_cast<int>(strEnding.size()));
  if (m_fd < 0) Fail("cannot be written", errno);
  fcntl(m_fd, F_SETFD, FD_CLOEXEC);
  m_iSlot = RememberUnfinishedFile(strTemp.c_str());
  m_strTemp = strTemp;

  mode_t mode = 0666;
  if (bOld) {
    mode = uOldMode;
  } else {
    const mode_t mask = umask(0);
    umask(mask);
    mode &= ~mask;
  }
  fchmod(m_fd, mode);
}

void OutputFile::Seal() {
  m_pStream->flush();
  if (m_pBuffer->Error() != 0) Fail("cannot be written", m_pBuffer->Error());
  if (!*m_pStream) Fail("cannot be written", EIO);
  if (fsync(m_fd) != 0) Fail("cannot be written", errno);
  struct stat now = {};
  if (fstat(m_fd, &now) != 0) Fail("cannot be written", errno);
  if (m_pBuffer->Written() != 0 && now.st_size != m_pBuffer->Written()) {
    Fail("cannot be written", EIO);
  }
  const int fd = m_fd;
  m_fd = -1;
  if (close(fd) != 0) Fail("cannot be written", errno);
}

bool OutputFile::CopyToStandardOutput() const {
  const int fd = open(m_strTemp.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  std::vector<char> buffer(1 << 18);
  ssize_t n = 0;
  bool bGood = true;
  while (bGood && (n = read(fd, buffer.data(), buffer.size())) != 0) {
    if (n < 0 && errno == EINTR) continue;
    bGood = n > 0 && WriteAll(STDOUT_FILENO, buffer.data(), static_cast<size_t>(n));
  }
  const int iErrno = errno;
  close(fd);
  errno = iErrno;
  return bGood;
}

void OutputFile::Rename() {
  if (m_bStandard) return;
  const SignalPause pause;
  if (rename(m_strTemp.c_str(), m_strTarget.c_str()) != 0) Fail("cannot be replaced", errno);
  m_strTemp.clear();
  ForgetUnfinishedFile(m_iSlot);
  m_iSlot = -1;
  const int fd = open(m_strFolder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return;  // a folder that may be written but not read: the rename itself is done
  const bool bSynced = fsync(fd) == 0 || errno == EINVAL || errno == EROFS;
  const int iErrno = errno;
  close(fd);
  if (!bSynced) Fail("may be lost if the machine stops now", iErrno);
}

void CheckOutputs(const std::vector<OutputName>& outputs, bool bJson) {
  std::map<std::string, std::string> names;  // target to option
  if (bJson) names["-"] = "--json";
  for (const OutputName& output : outputs) {
    if (output.strPath.empty()) {
      throw CommandError(kUsage, output.strOption + ": the name of the file is empty");
    }
    const bool bStandard = NamesStandardOutput(output.strPath);
    std::error_code error;
    const auto path = std::filesystem::absolute(BehindLinks(output.strPath), error);
    const std::string strTarget =
        bStandard ? "-" : std::filesystem::weakly_canonical(path, error).string();
    const auto [former, bNew] = names.emplace(strTarget, output.strOption);
    if (!bNew) {
      throw CommandError(kUsage, former->second + " and " + output.strOption + " both write " +
                                     (bStandard ? "standard output" : output.strPath) +
                                     "; two names would be right");
    }
    OutputFile::Check(output.strPath);
  }
}

void OutputFile::Fail(const std::string& strWhat, int iErrno) const {
  std::string strText = (m_bStandard ? "standard output" : m_strPath) + ": " + strWhat;
  if (iErrno != 0) strText += std::string(" (") + std::strerror(iErrno) + ")";
  throw CommandError(kCannotWrite, strText);
}

}  // namespace cli
