// Files of the run-time's streams, by name in either form.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "zu/foundation/string.h"

// Opens a file; the destructor closes it. Folders count as files that cannot be opened.
class ZuStdioFile {
 public:
  ZuStdioFile(const char* szPath, const char* szMode);
  ZuStdioFile(const wchar_t* szPath, const char* szMode);
  ~ZuStdioFile() { Close(); }
  ZuStdioFile(const ZuStdioFile&) = delete;
  ZuStdioFile& operator=(const ZuStdioFile&) = delete;

  std::FILE* Get() const { return m_fp; }  // null: not open

  // False when any byte written before, or the closing itself, failed.
  bool Close();

 private:
  std::FILE* m_fp;
};

// Bytes from the position to the end of a stream; 0 when it cannot be told.
std::uint64_t ZuStdioRest(std::FILE* fp);

// The name of a file without folder and extension, as clouds get it.
String ZuCloudName(const char* szPath);
String ZuCloudName(const wchar_t* szPath);

struct ZuStdioInput {
  std::FILE* fp;
  std::size_t Read(char* pTarget, std::size_t uSize) { return std::fread(pTarget, 1, uSize, fp); }
};
