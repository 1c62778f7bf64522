// Text, paths, words; who uses an object; progress and Ctrl-C.
#include "values.h"

#include <cstring>

#include "zu/foundation/debug.h"
#include "zu/foundation/progress.h"

py::str ToStr(std::string_view text) {
  PyObject* const p =
      PyUnicode_DecodeUTF8(text.data(), static_cast<py::ssize_t>(text.size()), "surrogateescape");
  if (p == nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::str>(p);
}

String ToString(const py::handle& text) {
  if (!PyUnicode_Check(text.ptr())) throw py::type_error("a str would be right");
  PyObject* const p = PyUnicode_AsEncodedString(text.ptr(), "utf-8", "surrogateescape");
  if (p == nullptr) throw py::error_already_set();
  const py::bytes bytes = py::reinterpret_steal<py::bytes>(p);
  const std::string_view view = bytes;
  if (view.size() > 65535 || view.find('\0') != std::string_view::npos) {
    throw py::value_error("a name holds at most 65535 bytes, and no NUL");
  }
  return String(view.data(), static_cast<int>(view.size()));
}

std::string ToPath(const py::handle& path) {
  PyObject* p = nullptr;
  if (PyUnicode_FSConverter(path.ptr(), &p) == 0) throw py::error_already_set();
  const py::bytes bytes = py::reinterpret_steal<py::bytes>(p);
  return std::string(std::string_view(bytes));
}

int FindWord(const char* szArgument, const std::string& strWord, const char* const* pszWords) {
  std::string strWords;
  for (int i = 0; pszWords[i] != nullptr; ++i) {
    if (strWord == pszWords[i]) return i;
    strWords += (i == 0                       ? ""
                 : pszWords[i + 1] == nullptr ? " or "
                                              : ", ") +
                ('"' + std::string(pszWords[i]) + '"');
  }
  throw py::value_error(std::string(szArgument) + ": \"" + strWord + "\"; " + strWords +
                        " would be right");
}

namespace {

[[noreturn]] void RaiseInUse() {
  throw std::runtime_error("another thread is at work on the object: one at a time");
}

}  // namespace

Reading::Reading(Gate& gate) : m_gate(gate) {
  if (gate.bWriter) RaiseInUse();
  ++gate.iReaders;
}

Writing::Writing(Gate& gate) : m_gate(gate) {
  if (gate.bWriter || gate.iReaders != 0) RaiseInUse();
  gate.bWriter = true;
}

std::mutex& WriterMutex() {
  static std::mutex mutex;
  return mutex;
}

namespace {

// The innermost operation of the thread.
thread_local Operation* g_pOperation = nullptr;

}  // namespace

struct OperationNotes {
  static bool Notify(void*, eZuProgress eWhat, const char* szTitle, double dPosition) {
    Operation* const pOperation = g_pOperation;
    return pOperation == nullptr || pOperation->Ask(szTitle, dPosition, eWhat != eZuProgressShow);
  }
};

bool Operation::Notify(const char* szTitle, double dDone) { return Ask(szTitle, dDone, true); }

// What the callable or a signal raised waits for Finish.
bool Operation::Ask(const char* szTitle, double dDone, bool bTell) {
  const py::gil_scoped_acquire acquire;
  if (m_apError[0] != nullptr) return false;
  if (PyErr_CheckSignals() == 0) {
    PyObject* pResult = nullptr;
    if (!bTell) {
      pResult = PyObject_CallMethod(m_errors.ptr(), "started", "s", szTitle);
    } else if (m_progress.is_none()) {
      return true;
    } else {
      pResult = PyObject_CallFunction(m_progress.ptr(), "sd", szTitle, dDone);
    }
    Py_XDECREF(pResult);
    if (pResult != nullptr) return true;
  }
  PyErr_Fetch(&m_apError[0], &m_apError[1], &m_apError[2]);
  return false;
}

Operation::Operation(const py::object& progress)
    : m_progress(progress), m_errors(py::module_::import("zu._errors")), m_pFormer(g_pOperation) {
  g_pOperation = this;
}

Operation::~Operation() {
  g_pOperation = m_pFormer;
  for (PyObject* p : m_apError) Py_XDECREF(p);
}

void Operation::Finish() {
  if (m_apError[0] == nullptr && PyErr_CheckSignals() == 0) return;
  if (m_apError[0] != nullptr) {
    PyErr_Restore(m_apError[0], m_apError[1], m_apError[2]);
    for (PyObject*& p : m_apError) p = nullptr;
  }
  throw py::error_already_set();
}

namespace {

// Debug output of the library becomes that of logging. Threads of its own loops are no threads of
// Python, and stay silent.
void LogDebug(void*, const char* szText) {
  if (PyGILState_GetThisThreadState() == nullptr) return;
  const py::gil_scoped_acquire acquire;
  const std::string strLine(szText, std::strcspn(szText, "\n"));
  PyObject* const pModule = PyImport_ImportModule("zu._errors");
  PyObject* const pResult =
      pModule == nullptr ? nullptr : PyObject_CallMethod(pModule, "started", "s", strLine.c_str());
  Py_XDECREF(pModule);
  Py_XDECREF(pResult);
  if (pResult == nullptr) PyErr_Clear();
}

}  // namespace

void FollowProgress() {
  ZuProgressHandler handler;
  handler.pfnNotify = &OperationNotes::Notify;
  ZuSetProgressHandler(handler);
  ZuSetDebugSink({&LogDebug, nullptr});
}
