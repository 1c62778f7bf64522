#include "zu/project/camera_file.h"

#include <fstream>
#include <map>

#include "zu/project/internal/keyword_text.h"
#include "zu/project/internal/text_reader.h"

using zu::internal::KeywordText;

namespace {

// A misspelt keyword loses a coefficient: no warning, an error.
void AddText(const KeywordText& text, ZuFindingList* pFindings) {
  for (ZuFinding finding : text.Findings()) {
    if (!finding.m_strRight.empty()) finding.m_eSeverity = eZuSeverityError;
    pFindings->Add(std::move(finding));
  }
}

void AddDoubled(const std::vector<ZuKeywordBlock>& blocks, const std::string& strName,
                ZuFindingList* pFindings) {
  std::map<unsigned, unsigned> lines;
  for (const ZuKeywordBlock& block : blocks) {
    const auto [place, bFirst] = lines.emplace(block.m_uId, block.m_uLine);
    if (bFirst) continue;
    pFindings->Add({strName, block.m_uLine, block.m_uColumn, eZuSeverityError, "CAMERA",
                    "camera " + std::to_string(block.m_uId) + " stands twice, first in line " +
                        std::to_string(place->second),
                    "one for each id"});
  }
}

}  // namespace

bool ZuCameraFile::Read(const char* szPath) {
  std::ifstream stream(szPath, std::ios::in | std::ios::binary);
  return Read(stream, szPath);
}

bool ZuCameraFile::Read(std::istream& stream, const std::string& strName) {
  m_Cameras.Destroy();
  m_Findings.Clear();
  m_bForeign = false;
  std::string strText;
  if (zu::internal::ReadWhole(stream, &strText)) return ReadText(strText, strName);
  m_Findings.Add(zu::internal::NotReadable(strName));
  return false;
}

bool ZuCameraFile::ReadText(const std::string& strText, const std::string& strName) {
  const KeywordText text(strText, strName, zu::internal::CameraFileRules(), false);
  m_bForeign = text.IsForeign();
  if (m_bForeign) {
    m_Findings.Add({strName, 0, 0, eZuSeverityError, "", "does not look like a camera file",
                    "blocks CAMERA { ID 1 C ... } or\n{ id c xh yh a1 a2 r0 \"name\" }"});
    return false;
  }
  AddText(text, &m_Findings);
  AddDoubled(text.Blocks(), strName, &m_Findings);
  ReadCameras(strText, strName);
  m_Findings.Sort();
  return m_Findings.GetErrorCount() == 0;
}

// As full form, and when that gives none as simple form.
void ZuCameraFile::ReadCameras(const std::string& strText, const std::string& strName) {
  ZuReadFaults faults;
  const ZuReaderObject forms[] = {
      {"CAMERA", Link(&m_Cameras, &ZuCameraList::ReadFormatFull)},
      ZuReaderObject(Link(&m_Cameras, &ZuCameraList::ReadFormatSimple))};
  for (ZuReaderObject form : forms) {
    zu::internal::TextReader reader(strText);
    faults.Clear();
    faults.Follow(&*reader);
    reader->RegisterObject(form);
    reader->DoProcess(false);
    if (!m_Cameras.IsEmpty()) break;
  }
  // The look at the text knows better what is wrong; this is for what it has no rule for.
  if (m_Findings.GetErrorCount() > 0 || faults.GetCount() == 0) return;
  m_Findings.Add({strName, faults.GetLine(0), 0, eZuSeverityError, "CAMERA", faults.GetText(0),
                  "numbers, \"names\" and closed blocks"});
}
