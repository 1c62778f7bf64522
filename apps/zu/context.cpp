#include "context.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iostream>
#include <locale>
#include <utility>

#include "progress_line.h"
#include "report_output.h"
#include "zu/version.h"

namespace cli {

Context::Context(std::string strCommand, const Switches& switches)
    : m_strCommand(std::move(strCommand)),
      m_switches(switches),
      m_pReport(std::make_unique<CommandReport>()) {
  m_text.imbue(std::locale::classic());
}

Context::~Context() = default;

CommandReport& Context::Report() { return *m_pReport; }

OutputFile& Context::NewOutput(const std::string& strPath) {
  m_outputs.push_back(std::make_unique<OutputFile>(strPath));
  return *m_outputs.back();
}

std::string Context::CommandWith(const std::string& strOption, const std::string& strValue) const {
  std::vector<std::string> words = m_arguments;
  bool bThere = false;
  for (size_t i = 0; i < words.size() && !bThere; ++i) {
    bThere = words[i] == strOption && i + 1 < words.size();
    if (bThere) words[i + 1] += "," + strValue;
    if (words[i].rfind(strOption + "=", 0) == 0) {
      bThere = true;
      words[i] += "," + strValue;
    }
  }
  if (!bThere) words.insert(words.end(), {strOption, strValue});
  std::string strLine = m_strCommand;
  for (const std::string& strWord : words) {
    const bool bPlain = !strWord.empty() && strWord.find_first_not_of(
                                                "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwx"
                                                "yz0123456789_-./,:=+@%") == std::string::npos;
    strLine += ' ';
    if (bPlain) {
      strLine += strWord;
      continue;
    }
    strLine += '\'';
    for (const char c : strWord) strLine += c == '\'' ? std::string("'\\''") : std::string(1, c);
    strLine += '\'';
  }
  return strLine;
}

void Context::Warn(const std::string& strText) const {
  if (!IsQuiet()) return WarnAlways(strText);
  m_warnings.push_back(strText);
}

void Context::Note(const std::string& strText) const {
  if (IsQuiet()) return;
  ClearProgress();
  std::cerr << m_strCommand << ": " << strText << std::endl;
}

void Context::WarnAlways(const std::string& strText) const {
  m_warnings.push_back(strText);
  ClearProgress();
  std::cerr << m_strCommand << ": " << strText << std::endl;
}

namespace {

// Nobody needs to be told that he has read enough, but of a result file that is not written.
void FinishStandardOutput(bool bWritten, const std::string& strLost) {
  if (bWritten && close(STDOUT_FILENO) == 0) return;
  if (errno == EPIPE && strLost.empty()) throw CommandError(kCannotWrite, "");
  throw CommandError(kCannotWrite, std::string("standard output cannot be written (") +
                                       std::strerror(errno) + ")" +
                                       (strLost.empty() ? "" : "; " + strLost + " is not written"));
}

const char* StatusText(ExitCode eCode) {
  return eCode == kGood            ? "good"
         : eCode == kNotAcceptable ? "computed, but not acceptable"
                                   : "faults in the input";
}

}  // namespace

void Context::SetStatus(int iStatus, const std::string& strText) {
  m_iStatus = iStatus;
  m_strStatus = strText;
}

void Context::SetUnit(const std::string& strUnit) {
  if (m_strUnit.empty()) m_strUnit = strUnit;
}

const Json& Context::Result(ExitCode eCode) {
  if (!m_result.is_null()) return m_result;
  Json json = {{"zu_version", ZuVersion()},
               {"command", m_strCommand.substr(m_strCommand.find(' ') + 1)},
               {"status", m_iStatus != 0 ? m_iStatus : static_cast<int>(eCode)},
               {"status_text", m_iStatus != 0 ? m_strStatus : StatusText(eCode)},
               {"unit", m_strUnit.empty() ? Json() : Json(m_strUnit)}};
  for (const auto& item : m_root.items()) json[item.key()] = std::move(item.value());
  json["warnings"] = m_warnings;
  m_result = std::move(json);
  return m_result;
}

void Context::Finish(ExitCode eCode) {
  std::string strLost;
  const OutputFile* pStandard = nullptr;
  for (const auto& pOutput : m_outputs) {
    pOutput->Seal();
    if (pOutput->IsStandardOutput()) pStandard = pOutput.get();
    if (!pOutput->IsStandardOutput() && strLost.empty()) strLost = pOutput->Path();
  }
  const std::string strText = pStandard != nullptr ? ""
                              : IsJson()           ? JsonText(Result(eCode))
                                                   : m_text.str();
  FinishStandardOutput(pStandard != nullptr
                           ? pStandard->CopyToStandardOutput()
                           : WriteAll(STDOUT_FILENO, strText.data(), strText.size()),
                       strLost);
  for (const auto& pOutput : m_outputs) pOutput->Rename();
}

void PrintAndClose(const std::string& strText) {
  FinishStandardOutput(WriteAll(STDOUT_FILENO, strText.data(), strText.size()), "");
}

}  // namespace cli
