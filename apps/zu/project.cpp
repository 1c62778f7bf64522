#include "project.h"

#include <algorithm>

#include "project_rules.h"
#include "zu/foundation/reader.h"

namespace cli {

namespace {

const char* FaultText(int iStatus) {
  switch (iStatus) {
    case ParserErrorStream:
      return "cannot be read on";
    case ParserErrorUnterminatedString:
      return "a text is not closed";
    case ParserErrorInvalidNumber:
      return "no number, or a matrix of the wrong shape";
    default:
      return "not what stands here";
  }
}

const char* FaultRight(int iStatus) {
  switch (iStatus) {
    case ParserErrorStream:
      return "lines of at most 8511 characters";
    case ParserErrorUnterminatedString:
      return "\"text\" on one line";
    case ParserErrorInvalidNumber:
      return "3x3, 4x4 or 3 numbers";
    default:
      return "a keyword, a number or a \"text\" as the keyword needs it";
  }
}

}  // namespace

Project::Project(const std::string& strPath, bool bPartial)
    : m_strPath(strPath), m_text(strPath, ProjectRules(), bPartial) {
  if (!IsForeign()) {
    ReadRecords();
    CheckBlocks();
    DropCutRecord();
  }
  m_findings = m_text.Findings();
  std::stable_sort(m_findings.begin(), m_findings.end(),
                   [](const Finding& a, const Finding& b) { return a.uLine < b.uLine; });
}

void Project::ReadRecords() {
  ZuReader reader(m_strPath.c_str());
  ZuReaderObject keywords[] = {
      {"PHOTO", Link(&m_Photos, &ZuPhotoList::AddPhoto)},
      {"ORTHOPHOTO", Link(&m_OrthoPhotos, &ZuOrthoPhotoList::AddPhoto)},
      {"CAMERA", Link(&m_Cameras, &ZuCameraList::ReadFormatFull)},
      {"PLANE", Link(&m_Planes, &ZuPlaneList::AddPlane)},
      {"LOKAL", Link(this, &Project::ReadLocalSystem)},
      {"MEASURE", Link(this, &Project::ReadMeasure)},
  };
  for (ZuReaderObject& keyword : keywords) reader.RegisterObject(keyword);
  reader.SkipUnknownToken(false);
  reader.SetUnknownTokenHdl(Link(this, &Project::OnUnknown));
  reader.SetParserErrorHdl(Link(this, &Project::OnFault));
  reader.DoProcess(false);
  for (const ZuReaderError* p = reader.GetReaderErrorList().First(); p != nullptr; p = p->Next()) {
    AddFault(p->m_uLine, p->m_eStatus);
  }
  // The look at the text knows better what is wrong; this is for what it has no rule for.
  if (m_text.Errors() > 0) return;
  for (const auto& [uLine, iStatus] : m_Faults) {
    m_text.Add({eSeverityError, uLine, 0, "", FaultText(iStatus), FaultRight(iStatus)});
  }
}

// { PHOTOID 1 POINTS { 1 244.4274 94.1646 ... } }
int Project::ReadMeasure(ZuReaderObject* pObject) {
  unsigned int uPhoto = 0;
  m_Rows.Destroy();
  ZuReaderObject photo("PHOTOID", &uPhoto);
  ZuReaderObject points("POINTS", Link(this, &Project::ReadPoints));
  pObject->RegisterObject(photo);
  pObject->RegisterObject(points);
  pObject->DoProcess();
  m_Rows.MoveTo(&m_Pixels[uPhoto]);
  return 1;
}

int Project::ReadPoints(ZuReaderObject* pObject) {
  constexpr eZuPointRWMask kColumns[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWEnd};
  m_Rows.SetMask(kColumns);
  ZuReaderObject rows(Link(&m_Rows, &ZuPointList::Read));
  pObject->RegisterObject(rows);
  return pObject->DoProcess();
}

int Project::ReadLocalSystem(ZuReaderObject* pObject) {
  m_LocalSystems.emplace_back();
  return m_LocalSystems.back().Read(pObject);
}

long Project::OnUnknown(ZuReader* pReader) {
  const unsigned uLine = pReader->GetParser().GetStatus().m_uLine;
  if (!HasFinding(uLine)) {
    const std::string strKeyword =
        std::string(pReader->GetParser().GetToken().m_szText).substr(0, 40);
    m_text.Add(
        {eSeverityWarning, uLine, 0, strKeyword, "unknown keyword " + strKeyword + " skipped", ""});
  }
  pReader->SkipUnknownValue();
  return 1;
}

long Project::OnFault(ZuReader* pReader) {
  const ZuReaderError* pError = pReader->GetReaderErrorList().Last();
  if (pError != nullptr) AddFault(pError->m_uLine, pError->m_eStatus);
  return 1;
}

void Project::AddFault(unsigned uLine, int iStatus) {
  const auto& blocks = m_text.Blocks();
  const bool bCut = !blocks.empty() && blocks.back().bCut && uLine >= blocks.back().uLine;
  if (iStatus > ParserStatusEOF && !bCut && !m_text.IsSkipped(uLine)) {
    m_Faults.emplace(uLine, iStatus);
  }
}

bool Project::HasFinding(unsigned uLine) const {
  const auto& findings = m_text.Findings();
  return std::any_of(findings.begin(), findings.end(),
                     [uLine](const Finding& finding) { return finding.uLine == uLine; });
}

void Project::Error(const KeywordBlock& block, const std::string& strText,
                    const std::string& strRight) {
  m_text.Add({eSeverityError, block.uLine, block.uColumn, block.strKeyword, strText, strRight});
}

void Project::CheckBlocks() {
  bool bPhoto = false;
  for (const KeywordBlock& block : m_text.Blocks()) {
    bPhoto |= block.strKeyword == "PHOTO" || block.strKeyword == "ORTHOPHOTO";
    if (block.strKeyword != "PHOTO" || block.bCut) continue;
    if (block.uId == 0) {
      const KeywordBlock::Unknown* pMeant = block.MeantAs("PHOTOID");
      Error(block, "PHOTO without PHOTOID",
            pMeant != nullptr ? "PHOTOID in place of " + pMeant->strWritten
                              : "PHOTOID 1 \"image\" in each");
      continue;
    }
    const auto [place, bFirst] = m_photoBlocks.emplace(block.uId, &block);
    if (bFirst) continue;
    Error(block,
          "photo " + std::to_string(block.uId) + " stands twice, first in line " +
              std::to_string(place->second->uLine),
          "one PHOTO block for each id");
  }
  for (const KeywordBlock& block : m_text.Blocks()) {
    if (block.strKeyword == "MEASURE") CheckMeasure(block);
  }
  if (!bPhoto) {
    m_text.Add({eSeverityError, 0, 0, "PHOTO", "no photo in the file", "PHOTO { ... } blocks"});
  }
}

void Project::CheckMeasure(const KeywordBlock& block) {
  const std::string strPhoto = std::to_string(block.uId);
  if (block.uId == 0) {
    if (!block.bCut) Error(block, "MEASURE without PHOTOID", "PHOTOID of a PHOTO block");
    return;
  }
  const auto [place, bFirst] = m_measureBlocks.emplace(block.uId, &block);
  if (!bFirst) {
    Error(block,
          "measurements of photo " + strPhoto + " stand twice, first in line " +
              std::to_string(place->second->uLine),
          "one MEASURE block for each photo");
  } else if (m_Photos.Find(block.uId) == nullptr) {
    Error(block, "measurements of photo " + strPhoto + ", which is not in the file",
          "PHOTOID of a PHOTO block");
  }
}

// Numbers at the very end of a cut file may lack their last digits.
void Project::DropCutRecord() {
  if (m_text.Blocks().empty() || !m_text.Blocks().back().bCut) return;
  const KeywordBlock& block = m_text.Blocks().back();
  if (block.strKeyword == "PHOTO") delete m_Photos.SubtractLast();
  if (block.strKeyword == "ORTHOPHOTO") delete m_OrthoPhotos.SubtractLast();
  if (block.strKeyword == "CAMERA") delete m_Cameras.SubtractLast();
  if (block.strKeyword == "MEASURE" && block.bLastRowCut) delete m_Pixels[block.uId].SubtractLast();
}

const std::vector<Project::Row>& Project::Doubled(unsigned uPhoto) const {
  static const std::vector<Row> none;
  const auto found = m_measureBlocks.find(uPhoto);
  return found != m_measureBlocks.end() ? found->second->doubled : none;
}

}  // namespace cli
