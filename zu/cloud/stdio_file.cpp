#include "zu/cloud/internal/stdio_file.h"

#include <filesystem>
#include <system_error>

#include "zu/foundation/file_name.h"
#include "zu/foundation/unicode.h"

namespace {

template <class Char>
bool IsFolder(const Char* szPath) {
  std::error_code ignored;
  return std::filesystem::is_directory(std::filesystem::path(szPath), ignored);
}

std::FILE* Open(const char* szPath, const char* szMode) {
  return szPath && !IsFolder(szPath) ? std::fopen(szPath, szMode) : nullptr;
}

#ifdef _WIN32
std::FILE* Open(const wchar_t* szPath, const char* szMode) {
  const wchar_t szWideMode[] = {static_cast<wchar_t>(szMode[0]), L'b', 0};
  return szPath && !IsFolder(szPath) ? _wfopen(szPath, szWideMode) : nullptr;
}
std::int64_t Tell(std::FILE* fp) { return _ftelli64(fp); }
int Seek(std::FILE* fp, std::int64_t iPos, int iFrom) { return _fseeki64(fp, iPos, iFrom); }
#else
std::FILE* Open(const wchar_t* szPath, const char* szMode) {
  const UniToAnsi path(szPath);
  return Open(path(), szMode);
}
std::int64_t Tell(std::FILE* fp) { return ftello(fp); }
int Seek(std::FILE* fp, std::int64_t iPos, int iFrom) {
  return fseeko(fp, static_cast<off_t>(iPos), iFrom);
}
#endif

}  // namespace

ZuStdioFile::ZuStdioFile(const char* szPath, const char* szMode) : m_fp(Open(szPath, szMode)) {}

ZuStdioFile::ZuStdioFile(const wchar_t* szPath, const char* szMode) : m_fp(Open(szPath, szMode)) {}

bool ZuStdioFile::Close() {
  if (!m_fp) return true;
  const bool bGood = std::ferror(m_fp) == 0;
  const bool bClosed = std::fclose(m_fp) == 0;
  m_fp = nullptr;
  return bGood && bClosed;
}

std::uint64_t ZuStdioRest(std::FILE* fp) {
  const std::int64_t iBegin = Tell(fp);
  if (iBegin < 0 || Seek(fp, 0, SEEK_END) != 0) return 0;
  const std::int64_t iEnd = Tell(fp);
  if (Seek(fp, iBegin, SEEK_SET) != 0 || iEnd <= iBegin) return 0;
  return static_cast<std::uint64_t>(iEnd - iBegin);
}

String ZuCloudName(const char* szPath) { return ZuGetFilenameNoExt(szPath); }

String ZuCloudName(const wchar_t* szPath) {
  const UniToAnsi name(ZuGetFilenameNoExt(szPath));
  return name() ? String(name()) : String();
}
