#include "reading.h"

#include "exit_code.h"
#include "text_table.h"

namespace cli {
namespace {

[[noreturn]] void Refuse(const ZuReadFinding& finding, const std::string& strName,
                         const std::string& strHowToGoOn) {
  std::string strText = Placed(finding, strName);
  if (finding.m_strKeyword == "id") {
    strText += "\nnames as ids are read with --columns idname,..., titles start with #";
  } else if (finding.m_strKeyword == "x" || finding.m_strKeyword == "y") {
    strText += "\nwhere the columns are others, --columns tells them, as id,name,x,y,z";
  } else if (!strHowToGoOn.empty()) {
    strText += "\n" + strHowToGoOn;
  }
  throw CommandError(kBadInput, strText);
}

}  // namespace

std::string Placed(ZuFinding finding, const std::string& strName) {
  finding.m_strFile = strName;
  return GetZuFindingPlace(finding) + ": " + GetZuFindingText(finding);
}

eZuReadMode ReadMode(const Context& context) {
  return context.IsTolerant() ? eZuReadTolerant : eZuReadStrict;
}

void TellFindings(const ZuReadFindings& findings, const std::string& strName, bool bPartial,
                  const char* szHowToGoOn, Context& context) {
  context.Root()["read_as"].push_back(findings.m_Dialect.GetText());
  if (const auto* p = findings.First(eZuReadFault)) Refuse(*p, strName, "");
  const ZuReadFinding* const pCut = findings.First(eZuReadCut);
  if (pCut != nullptr && !bPartial && !context.IsTolerant()) Refuse(*pCut, strName, szHowToGoOn);
  const ZuReadFinding* const pFirst = findings.FirstOf(eZuSeverityWarning);
  if (pFirst != nullptr && context.IsStrict()) {
    Refuse(*pFirst, strName, kWithoutStrict);
  }
  size_t uWarnings = 0;
  for (const ZuReadFinding& finding : findings) {
    if (finding.m_eSeverity == eZuSeverityNote) continue;
    if (++uWarnings <= kWarningsTold) context.Warn(Placed(finding, strName));
  }
  if (uWarnings <= kWarningsTold) return;
  context.Warn(strName + ": " + Counted(uWarnings - kWarningsTold, "more warning"));
}

}  // namespace cli
