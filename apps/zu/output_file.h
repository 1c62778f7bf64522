// A result file that is there as a whole or not at all. It is written under another name in the
// same folder; the file of the final name stays byte for byte as it was until Rename. "-" and
// /dev/stdout are standard output, which takes the result as a whole, too.
#pragma once

#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace cli {

class OutputFile {
 public:
  // Creates the unfinished file. Throws CommandError (cannot write): no such folder, no right, the
  // name is a folder or a device. Symbolic links are followed, one to a file that is still to be
  // made, too; the mode of an old file is kept.
  explicit OutputFile(const std::string& strPath) : OutputFile(strPath, true) {}
  ~OutputFile();  // removes what was not renamed
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  // Throws what the constructor would for that name, and changes nothing.
  static void Check(const std::string& strPath) { OutputFile(strPath, false); }

  const std::string& Path() const { return m_strPath; }

  // The unfinished file, for a writer that opens files by name. Its ending is that of Path(). Such
  // a writer must have closed it before Seal, and its caller must have read back what matters:
  // errors of a stream that is gone cannot be seen here.
  const std::string& TempPath() const { return m_strTemp; }

  // The stream to write to. Its numbers are those of the classic locale.
  std::ostream& Stream() { return *m_pStream; }

  // Flushes, syncs and checks that every byte of Stream() arrived. Throws CommandError.
  void Seal();

  // Gives the file its final name and syncs the folder. Seal comes first. Throws CommandError.
  void Rename();

  bool IsStandardOutput() const { return m_bStandard; }
  // Copies a result for standard output there. Seal comes first. False with errno set.
  bool CopyToStandardOutput() const;

 private:
  class Buffer;

  OutputFile(const std::string& strPath, bool bCreate);
  bool CheckTarget(unsigned* puMode) const;
  void Create();
  [[noreturn]] void Fail(const std::string& strWhat, int iErrno) const;

  bool m_bStandard;
  std::string m_strPath;    // as the caller named it
  std::string m_strTarget;  // behind symbolic links
  std::string m_strFolder;
  std::string m_strTemp;
  int m_fd = -1;
  int m_iSlot = -1;
  std::unique_ptr<Buffer> m_pBuffer;
  std::unique_ptr<std::ostream> m_pStream;
};

// A result as the caller named it, with the option that did ("-o").
struct OutputName {
  std::string strOption, strPath;
};

// Looks at the names before anything is computed. Throws CommandError: (usage) a name that is
// empty, two results of one name, also through links, or of which both, as `bJson` is one, go to
// standard output; (cannot write) what OutputFile would throw.
void CheckOutputs(const std::vector<OutputName>& outputs, bool bJson);

// Writes everything; false at the first error, with errno set. Goes on after a signal.
bool WriteAll(int fd, const char* pData, size_t uSize);

}  // namespace cli
