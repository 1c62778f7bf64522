// An input that the caller names on the command line: a file, or a pipe in its place ("-" for
// standard input, /dev/stdin, a FIFO, "<(...)"), read once with the same result as the file.
#pragma once

#include <string>

namespace cli {

class InputFile {
 public:
  // Opens the input. What is no regular file is read to its end here, into a file without a name in
  // TMPDIR (or /tmp), which is gone with the object, however the program ends.
  //
  // Throws CommandError, with `szNeeded` ("a project file") as what would be right: (bad input)
  // nothing of that name, a folder, a device, no right to read, an input that does not end within
  // half of the free space of TMPDIR; (cannot write) no room there; (usage) a pipe that another
  // input has already read.
  InputFile(const std::string& strPath, const char* szNeeded);
  ~InputFile();
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  // A regular file with the bytes, for readers that open by name, while the object lives; the
  // caller's own path where that is one. Messages show Name().
  const std::string& Path() const { return m_strPath; }
  // The input as the caller named it, "standard input" for "-".
  const std::string& Name() const { return m_strName; }

  // All bytes. Throws CommandError (bad input).
  std::string Text() const;

 private:
  void Spool(int fd);
  [[noreturn]] void Fail(const std::string& strWhat) const;

  std::string m_strPath, m_strName;
  const char* m_szNeeded;
  int m_fd = -1;
};

// The path, or "standard input" for "-".
std::string NameInMessages(const std::string& strPath);

}  // namespace cli
