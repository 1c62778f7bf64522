#include "zu/project/project.h"

#include "zu/project/internal/keyword_text.h"

using zu::internal::KeywordText;

ZuProject::ZuProject() : m_pText(std::make_unique<KeywordText>()) {}

ZuProject::~ZuProject() = default;

void ZuProject::Clear() {
  m_photoBlocks.clear();
  m_measureBlocks.clear();
  m_aItems.clear();
  m_Faults.clear();
  m_bForeign = false;
  m_pText = std::make_unique<KeywordText>();
  m_Photos.Destroy();
  m_OrthoPhotos.Destroy();
  m_Cameras.Destroy();
  m_Planes.Destroy();
  m_LocalSystems.clear();
  m_ObjectPoints.Destroy();
  m_Measurements.clear();
  m_Covariances.Clear();
}

const ZuFindingList& ZuProject::GetFindings() const { return m_pText->Findings(); }

bool ZuProject::IsCut() const { return m_pText->IsCut(); }

const std::vector<ZuFileComment>& ZuProject::GetLastComments() const {
  return m_pText->Top().m_comments;
}

const ZuPointList* ZuProject::FindMeasurements(unsigned uPhoto) const {
  const auto found = m_Measurements.find(uPhoto);
  return found != m_Measurements.end() ? &found->second : nullptr;
}

ZuPointList ZuProject::ToldDeviations(unsigned uPhoto) const {
  ZuPointList told;
  const ZuPointList* const pRows = FindMeasurements(uPhoto);
  for (const ZuPoint* p = pRows != nullptr ? pRows->First() : nullptr; p != nullptr;
       p = p->Next()) {
    if (p->m_dDX > 0.0 && p->m_dDY > 0.0) told.Add(*p);
  }
  return told;
}

const std::vector<ZuDoubledRow>& ZuProject::GetDoubled(unsigned uPhoto) const {
  static const std::vector<ZuDoubledRow> none;
  const auto found = m_measureBlocks.find(uPhoto);
  return found != m_measureBlocks.end() ? found->second->m_doubled : none;
}

const ZuKeywordBlock* ZuProject::FindPhotoBlock(unsigned uPhoto) const {
  const auto found = m_photoBlocks.find(uPhoto);
  return found != m_photoBlocks.end() ? found->second : nullptr;
}
