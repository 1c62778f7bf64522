// Findings and failures as exceptions and warnings of the package.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "values.h"

namespace {

py::object Named(const char* szName) { return py::module_::import("zu._errors").attr(szName); }

[[noreturn]] void Raise(const py::object& exception) {
  PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(exception.ptr())), exception.ptr());
  throw py::error_already_set();
}

void Tell(const py::list& findings, const std::string& strFile) {
  if (py::len(findings) > 0) Named("tell")(findings, ToStr(strFile));
}

}  // namespace

py::object ToFinding(const ZuFinding& finding) {
  return Named("Finding")(ToStr(finding.m_strFile), finding.m_uLine, finding.m_uColumn,
                          GetZuSeverityText(finding.m_eSeverity), ToStr(finding.m_strKeyword),
                          ToStr(finding.m_strText), ToStr(finding.m_strRight));
}

void TellFindings(const std::vector<ZuFinding>& findings, const std::string& strFile) {
  py::list all;
  for (const ZuFinding& finding : findings) all.append(ToFinding(finding));
  Tell(all, strFile);
}

void TellFindings(const ZuReadFindings& findings, const std::string& strFile, bool bPartial) {
  if (findings.IsEmpty()) return;
  py::list all;
  for (ZuReadFinding finding : findings) {
    if (bPartial && finding.m_eKind == eZuReadCut) finding.m_eSeverity = eZuSeverityWarning;
    all.append(ToFinding(finding));
  }
  if (findings.begin() == findings.end()) throw std::bad_alloc();
  Tell(all, strFile);
}

void CheckReadable(const std::string& strFile) {
  const int fd = open(strFile.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (fd >= 0) close(fd);
  const bool bFolder = std::filesystem::is_directory(strFile);
  if (fd >= 0 && !bFolder) return;
  if (bFolder) errno = EISDIR;
  PyErr_SetFromErrnoWithFilename(PyExc_OSError, strFile.c_str());
  throw py::error_already_set();
}

void RaiseWrite(const std::string& strFile, const std::string& strReason) {
  Raise(Named("WriteError")(ToStr(strFile), ToStr(strReason)));
}

void RaiseWrite(const std::string& strFile, int iErrno) {
  RaiseWrite(strFile, iErrno == 0 ? "not all of it was written" : std::strerror(iErrno));
}

void RaiseAdjustment(const char* szStatus, const std::string& strReason, const std::string& strFree,
                     const py::object& result) {
  Raise(Named("AdjustmentError")(szStatus, ToStr(strReason), ToStr(strFree), result));
}
