// What the files of the module share: values of Python as those of the library and back, errors,
// and who uses an object at a time.
#pragma once

#include <pybind11/pybind11.h>

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "zu/foundation/read_findings.h"
#include "zu/foundation/string.h"

namespace py = pybind11;

// --- Text ----------------------------------------------------------------------------------------

// UTF-8; bytes that are none are kept as lone surrogates, so that they go back as they were.
py::str ToStr(std::string_view text);
inline py::str ToStr(const String& str) {
  return ToStr(std::string_view(str.chars(), static_cast<std::size_t>(str.length())));
}
// Raises ValueError for a text that a String does not hold: above 65535 bytes, or with a NUL.
String ToString(const py::handle& text);
// A path as os.fspath gives it.
std::string ToPath(const py::handle& path);
// The place of a word in a list of words that ends with null; raises ValueError that names them.
int FindWord(const char* szArgument, const std::string& strWord, const char* const* pszWords);

// --- Arrays --------------------------------------------------------------------------------------

// Numbers of an array-like as rows one behind the other. A single row is one of a shape (columns).
struct Rows {
  py::object keep;  // owns the numbers
  const double* pd = nullptr;
  py::ssize_t n = 0;
  int iColumns = 0;
  bool bSingle = false;

  const double* Row(py::ssize_t i) const { return pd + i * iColumns; }
};

// The numbers of an n x columns array-like, converted where they are not double already. Raises
// ValueError that names the argument and its shape. 0 columns: a plain sequence of n.
Rows AsRows(const py::handle& value, int iColumns, const char* szArgument);
// A new array; the numbers are not set.
py::object NewArray(const std::vector<py::ssize_t>& shape, double** ppd);
py::object NewArrayOf(const std::vector<py::ssize_t>& shape, const double* pd);
// A read-only array on memory that `base` keeps alive; strides in bytes.
py::object NewView(const py::object& dtype, const std::vector<py::ssize_t>& shape,
                   const std::vector<py::ssize_t>& strides, const void* p, const py::object& base);
// The shape of rows of that many columns for such an input: (columns) for a single one.
std::vector<py::ssize_t> ShapeLike(const Rows& rows, int iColumns);
py::object NewIds(py::ssize_t n, unsigned** ppu);  // uint32
py::object NewIdsOf(const std::vector<unsigned>& ids);
py::object NewInts(py::ssize_t n, int** ppi);  // int32
py::object NewBools(py::ssize_t n, bool** ppb);
// Ids from 0 to 4294967295 of an array-like; raises ValueError.
std::vector<unsigned> AsIds(const py::handle& value, const char* szArgument);
std::vector<int> AsInts(const py::handle& value, const char* szArgument);

// --- Errors --------------------------------------------------------------------------------------

// A finding as a value of Python.
py::object ToFinding(const ZuFinding& finding);
// Gives warnings on as zu.ReadWarning and raises zu.ReadError for the first error; strFile is the
// file of findings that name none.
void TellFindings(const std::vector<ZuFinding>& findings, const std::string& strFile);
// bPartial: a file that ends too early is a warning.
void TellFindings(const ZuReadFindings& findings, const std::string& strFile,
                  bool bPartial = false);
// Raises the OSError of a file that cannot be opened for reading: FileNotFoundError and the like.
void CheckReadable(const std::string& strFile);
// Raises zu.WriteError; errno is that of the system call that failed, or 0.
[[noreturn]] void RaiseWrite(const std::string& strFile, int iErrno);
[[noreturn]] void RaiseWrite(const std::string& strFile, const std::string& strReason);
// Raises zu.AdjustmentError; the result is what is known of the failure, or None.
[[noreturn]] void RaiseAdjustment(const char* szStatus, const std::string& strReason,
                                  const std::string& strFree, const py::object& result);

// --- Use -----------------------------------------------------------------------------------------

// Who uses an object while the interpreter's lock is released. Counted with the lock held.
struct Gate {
  int iReaders = 0;
  bool bWriter = false;
};

// A use of an object by one call. Raises RuntimeError where another thread is at work on it.
class Reading {
 public:
  explicit Reading(Gate& gate);
  ~Reading() { --m_gate.iReaders; }
  Reading(const Reading&) = delete;
  Reading& operator=(const Reading&) = delete;

 private:
  Gate& m_gate;
};

class Writing {
 public:
  explicit Writing(Gate& gate);
  ~Writing() { m_gate.bWriter = false; }
  Writing(const Writing&) = delete;
  Writing& operator=(const Writing&) = delete;

 private:
  Gate& m_gate;
};

// Held while records are written: their indentation is one of the process. Taken with the
// interpreter's lock released.
std::mutex& WriterMutex();

// A long operation: progress goes to a callable (None: nobody) as (title, done), done from 0 to 1,
// and Ctrl-C or an exception of the callable stops it. The operation runs with the lock released.
//
//   Operation operation(progress);
//   { const py::gil_scoped_release release; ... }
//   operation.Finish();  // raises what stopped it
class Operation {
 public:
  explicit Operation(const py::object& progress);
  ~Operation();
  Operation(const Operation&) = delete;
  Operation& operator=(const Operation&) = delete;

  // Tells how far it has come, from 0 to 1, and looks for Ctrl-C; false ends the operation. With
  // the lock released.
  bool Notify(const char* szTitle, double dDone);
  void Finish();

 private:
  friend struct OperationNotes;
  bool Ask(const char* szTitle, double dDone, bool bTell);

  py::object m_progress, m_errors;
  Operation* m_pFormer;
  PyObject* m_apError[3] = {};  // type, value, traceback of what stopped it
};
// Once, when the module is loaded.
void FollowProgress();
