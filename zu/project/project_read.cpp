// The records of a project file. A look at its text comes first: it knows best what is wrong where.
#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <utility>

#include "zu/project/internal/keyword_text.h"
#include "zu/project/internal/text_reader.h"
#include "zu/project/project.h"

using zu::internal::KeywordText;

namespace {

using Place = std::pair<unsigned, unsigned>;

template <class Item>
Place PlaceOf(const Item& item) {
  return {item.m_uLine, item.m_uColumn};
}

Place PlaceOf(const ZuProjectItem& item) {
  return item.m_pBlock != nullptr ? PlaceOf(*item.m_pBlock) : PlaceOf(*item.m_pUnknown);
}

}  // namespace

bool ZuProject::Read(const char* szPath, eZuProjectPart ePart) {
  std::ifstream stream(szPath, std::ios::in | std::ios::binary);
  return Read(stream, szPath, ePart);
}

bool ZuProject::Read(std::istream& stream, const std::string& strName, eZuProjectPart ePart) {
  std::string strText;
  if (zu::internal::ReadWhole(stream, &strText)) return ReadText(strText, strName, ePart);
  Clear();
  m_pText->Findings().Add(zu::internal::NotReadable(strName));
  return false;
}

bool ZuProject::ReadText(const std::string& strText, const std::string& strName,
                         eZuProjectPart ePart) {
  Clear();
  m_pText = std::make_unique<KeywordText>(strText, strName, zu::internal::ProjectRules(),
                                          ePart == eZuProjectPartial);
  m_strName = strName;
  m_bForeign = m_pText->IsForeign();
  if (m_bForeign) {
    m_pText->Findings().Clear();
    m_pText->Add(eZuSeverityError, 0, 0, "", "does not look like a project file",
                 "blocks PHOTO { ... } and MEASURE { ... }");
    return false;
  }
  MakeItems();
  ReadRecords(strText);
  AddFaults();
  CheckBlocks();
  DropCutRecord();
  m_pText->Findings().Sort();
  return GetFindings().GetErrorCount() == 0;
}

void ZuProject::MakeItems() {
  const ZuKeywordBlock& top = m_pText->Top();
  for (const ZuKeywordBlock& block : top.m_blocks) m_aItems.emplace_back().m_pBlock = &block;
  for (const ZuUnknownKeyword& word : top.m_unknown) m_aItems.emplace_back().m_pUnknown = &word;
  std::sort(m_aItems.begin(), m_aItems.end(),
            [](const ZuProjectItem& a, const ZuProjectItem& b) { return PlaceOf(a) < PlaceOf(b); });
}

void ZuProject::ReadRecords(const std::string& strText) {
  zu::internal::TextReader reader(strText);
  ZuReaderObject keywords[] = {
      {"PHOTO", Link(this, &ZuProject::ReadPhoto)},
      {"ORTHOPHOTO", Link(this, &ZuProject::ReadOrthoPhoto)},
      {"CAMERA", Link(this, &ZuProject::ReadCamera)},
      {"PLANE", Link(this, &ZuProject::ReadPlane)},
      {"LOKAL", Link(this, &ZuProject::ReadLocalSystem)},
      {"MEASURE", Link(this, &ZuProject::ReadMeasure)},
      {"POINTS", Link(this, &ZuProject::ReadObjectPoints)},
      {"COVARIANCE", Link(this, &ZuProject::ReadCovariance)},
  };
  for (ZuReaderObject& keyword : keywords) reader->RegisterObject(keyword);
  reader->SkipUnknownToken(false);
  reader->SetUnknownTokenHdl(Link(this, &ZuProject::OnUnknown));
  reader->SetParserErrorHdl(Link(this, &ZuProject::OnFault));
  reader->DoProcess(false);
  for (const ZuReaderError* p = reader->GetReaderErrorList().First(); p != nullptr; p = p->Next()) {
    AddFault(p->m_uLine, p->m_eStatus);
  }
}

// The item whose first value, or whose brace and first token, are in hand; null where the look at
// the text saw none.
ZuProjectItem* ZuProject::ItemAt(ZuReaderObject* pObject) {
  constexpr unsigned kBetween = 2;  // tokens from the keyword on, at most
  const unsigned uToken = pObject->GetStreamParser().GetStatus().m_uTokenCount;
  const auto& blocks = m_pText->Blocks();
  const auto next =
      std::lower_bound(blocks.begin(), blocks.end(), uToken,
                       [](const ZuKeywordBlock& b, unsigned u) { return b.m_uToken < u; });
  if (next == blocks.begin() || uToken - std::prev(next)->m_uToken > kBetween) return nullptr;
  const auto item = std::lower_bound(
      m_aItems.begin(), m_aItems.end(), PlaceOf(*std::prev(next)),
      [](const ZuProjectItem& i, const Place& place) { return PlaceOf(i) < place; });
  return &*item;
}

// The item is looked up before the record is read.
int ZuProject::ReadPhoto(ZuReaderObject* pObject) {
  return Keep({ItemAt(pObject), m_Photos.AddPhoto(pObject)});
}

int ZuProject::ReadOrthoPhoto(ZuReaderObject* pObject) {
  return Keep({ItemAt(pObject), m_OrthoPhotos.AddPhoto(pObject)});
}

int ZuProject::ReadCamera(ZuReaderObject* pObject) {
  return Keep({ItemAt(pObject), m_Cameras.AddCamera(pObject, true)});
}

int ZuProject::ReadPlane(ZuReaderObject* pObject) {
  return Keep({ItemAt(pObject), m_Planes.AddPlane(pObject)});
}

int ZuProject::Keep(const KeptRecord& kept) {
  if (kept.pItem != nullptr) kept.pItem->m_pRecord = kept.pRecord;
  return 1;
}

int ZuProject::ReadLocalSystem(ZuReaderObject* pObject) {
  ZuProjectItem* const pItem = ItemAt(pObject);
  if (pItem != nullptr) pItem->m_iLocalSystem = static_cast<int>(m_LocalSystems.size());
  m_LocalSystems.emplace_back();
  return m_LocalSystems.back().Read(pObject);
}

// { PHOTOID 1 POINTS { 1 244.4274 94.1646 ... } SIGMA { 1 0.08 0.1 ... } }
int ZuProject::ReadMeasure(ZuReaderObject* pObject) {
  const ZuProjectItem* const pItem = ItemAt(pObject);
  unsigned int uPhoto = 0;
  m_Rows.Destroy();
  m_Deviations.Destroy();
  ZuReaderObject photo("PHOTOID", &uPhoto);
  ZuReaderObject points("POINTS", Link(this, &ZuProject::ReadMeasuredRows));
  ZuReaderObject deviations("SIGMA", Link(this, &ZuProject::ReadDeviations));
  pObject->RegisterObject(photo);
  pObject->RegisterObject(points);
  pObject->RegisterObject(deviations);
  pObject->DoProcess();
  ApplyDeviations(pItem);
  m_Rows.MoveTo(&m_Measurements[uPhoto]);
  return 1;
}

int ZuProject::ReadMeasuredRows(ZuReaderObject* pObject) {
  constexpr eZuPointRWMask kColumns[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWEnd};
  m_Rows.SetMask(kColumns);
  ZuReaderObject rows(Link(&m_Rows, &ZuPointList::Read));
  pObject->RegisterObject(rows);
  return pObject->DoProcess();
}

int ZuProject::ReadDeviations(ZuReaderObject* pObject) {
  constexpr eZuPointRWMask kColumns[] = {eZuPointRWId, eZuPointRWDX, eZuPointRWDY, eZuPointRWEnd};
  m_Deviations.SetMask(kColumns);
  ZuReaderObject rows(Link(&m_Deviations, &ZuPointList::Read));
  pObject->RegisterObject(rows);
  return pObject->DoProcess();
}

// Gives each measurement its row of SIGMA; of an id that is measured twice, the rows in their
// order.
void ZuProject::ApplyDeviations(const ZuProjectItem* pItem) {
  if (m_Deviations.IsEmpty()) return;
  const ZuKeywordBlock* const pBlock = pItem != nullptr ? pItem->m_pBlock : nullptr;
  // A number at the end of a cut file may lack its last digits.
  if (pBlock != nullptr && pBlock->m_bCut && pBlock->LineOf("SIGMA") >= pBlock->LineOf("POINTS")) {
    return;
  }
  std::multimap<unsigned, ZuPoint*> points;
  for (ZuPoint* p = m_Rows.First(); p != nullptr; p = p->Next()) points.emplace(p->GetId(), p);
  for (const ZuPoint* p = m_Deviations.First(); p != nullptr; p = p->Next()) {
    const bool bGood = p->m_dDX > 0.0 && p->m_dDY > 0.0 && std::isfinite(p->m_dDX + p->m_dDY);
    const auto found = points.find(p->GetId());
    if (bGood && found != points.end()) {
      found->second->m_dDX = p->m_dDX;
      found->second->m_dDY = p->m_dDY;
      points.erase(found);
    } else if (pBlock != nullptr && GetFindings().GetErrorCount() == 0) {
      const ZuKeywordPlace place = pBlock->PlaceOf("SIGMA");
      m_pText->Add(eZuSeverityError, place.m_uLine, place.m_uColumn, "SIGMA",
                   "SIGMA of point " + std::to_string(p->GetId()) +
                       (bGood ? ", which is not among the POINTS" : " is not above 0"),
                   bGood ? "a row of a measured point" : "standard deviations in pixels");
    }
  }
}

// { PHOTOID 1 PARAMETERS "c" MATRIX { 7 7 ... } }
int ZuProject::ReadCovariance(ZuReaderObject* pObject) {
  ZuProjectItem* const pItem = ItemAt(pObject);
  ZuCovariance covariance;
  covariance.Read(pObject);
  if (pItem == nullptr || pItem->m_pBlock->m_bCut) return 1;
  const auto [strFault, strRight] = covariance.Fault();
  if (!strFault.empty()) {
    Error(*pItem->m_pBlock, "COVARIANCE with " + strFault, strRight);
    return 1;
  }
  pItem->m_covariance = ZuCovarianceList::KeyOf(covariance);
  if (m_Covariances.Find(*pItem->m_covariance) != nullptr) {
    Error(*pItem->m_pBlock, "this COVARIANCE stands twice", "one block of a photo, or camera");
  }
  m_Covariances.Set(covariance);
  return 1;
}

// { 1 182.9437 83.8612 374.3365 ... }
int ZuProject::ReadObjectPoints(ZuReaderObject* pObject) {
  constexpr eZuPointRWMask kColumns[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWZ,
                                         eZuPointRWEnd};
  m_ObjectPoints.SetMask(kColumns);
  ZuReaderObject rows(Link(&m_ObjectPoints, &ZuPointList::Read));
  pObject->RegisterObject(rows);
  return pObject->DoProcess();
}

long ZuProject::OnUnknown(ZuReader* pReader) {
  const unsigned uLine = pReader->GetParser().GetStatus().m_uLine;
  if (!HasFinding(uLine)) {
    const std::string strKeyword =
        std::string(pReader->GetParser().GetToken().m_szText).substr(0, 40);
    m_pText->Add(eZuSeverityWarning, uLine, 0, strKeyword,
                 "unknown keyword " + strKeyword + " skipped", "");
  }
  pReader->SkipUnknownValue();
  return 1;
}

long ZuProject::OnFault(ZuReader* pReader) {
  const ZuReaderError* pError = pReader->GetReaderErrorList().Last();
  if (pError != nullptr) AddFault(pError->m_uLine, pError->m_eStatus);
  return 1;
}

void ZuProject::AddFault(unsigned uLine, eZuParserStatus eStatus) {
  const bool bCut = IsCut() && uLine >= m_pText->Blocks().back().m_uLine;
  if (eStatus > ParserStatusEOF && !bCut && !m_pText->IsSkipped(uLine)) {
    m_Faults.emplace(uLine, eStatus);
  }
}

// For what the look at the text, which knows better what is wrong, has no rule for.
void ZuProject::AddFaults() {
  if (GetFindings().GetErrorCount() > 0) return;
  for (const auto& [uLine, eStatus] : m_Faults) {
    m_pText->Findings().Add(zu::internal::ReaderFault(m_strName, uLine, eStatus));
  }
}

bool ZuProject::HasFinding(unsigned uLine) const {
  return std::any_of(GetFindings().begin(), GetFindings().end(),
                     [uLine](const ZuFinding& finding) { return finding.m_uLine == uLine; });
}
