// A text in a file of its own, for a test of a reader; the file goes with the object.
//
//   TempFile file("A 1 B 2\n");
//   ZuReader reader(file.Path());
#pragma once

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

class TempFile {
 public:
  // The text is written byte for byte. The ending, if any, is that of the file's name (".prj").
  explicit TempFile(std::string_view text = "", std::string_view ending = {}) {
    m_strPath = (std::filesystem::temp_directory_path() / "zu_test_XXXXXX").string();
    m_strPath += ending;
    const int iFile = mkstemps(m_strPath.data(), static_cast<int>(ending.size()));
    if (iFile < 0) throw std::runtime_error("no temporary file: " + m_strPath);
    Store(fdopen(iFile, "wb"), text);
  }
  ~TempFile() {
    std::error_code error;
    std::filesystem::remove(m_strPath, error);
  }
  TempFile(TempFile const&) = delete;
  TempFile& operator=(TempFile const&) = delete;

  char const* Path() const { return m_strPath.c_str(); }

  // Replaces the content.
  void Write(std::string_view text) const { Store(std::fopen(Path(), "wb"), text); }

  // The content, byte for byte.
  std::string Read() const {
    std::FILE* pFile = std::fopen(Path(), "rb");
    if (pFile == nullptr) throw std::runtime_error("cannot read " + m_strPath);
    std::string text;
    char acBlock[4096];
    for (std::size_t n; (n = std::fread(acBlock, 1, sizeof(acBlock), pFile)) > 0;) {
      text.append(acBlock, n);
    }
    std::fclose(pFile);
    return text;
  }

 private:
  void Store(std::FILE* pFile, std::string_view text) const {
    if (pFile == nullptr) throw std::runtime_error("cannot write " + m_strPath);
    const bool bWritten =
        text.empty() || std::fwrite(text.data(), 1, text.size(), pFile) == text.size();
    if (std::fclose(pFile) != 0 || !bWritten) throw std::runtime_error("cannot write " + m_strPath);
  }

  std::string m_strPath;
};
