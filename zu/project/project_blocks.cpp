// What the blocks of a project say together: ids that stand twice, measurements without a photo.
#include "zu/project/internal/keyword_text.h"
#include "zu/project/project.h"

void ZuProject::Error(const ZuKeywordBlock& block, const std::string& strText,
                      const std::string& strRight) {
  m_pText->Add(eZuSeverityError, block.m_uLine, block.m_uColumn, block.m_strKeyword, strText,
               strRight);
}

void ZuProject::CheckBlocks() {
  bool bPhoto = false;
  for (const ZuKeywordBlock& block : m_pText->Blocks()) {
    bPhoto |= block.m_strKeyword == "PHOTO" || block.m_strKeyword == "ORTHOPHOTO";
    if (block.m_strKeyword == "PHOTO" && !block.m_bCut) CheckPhoto(block);
  }
  for (const ZuKeywordBlock& block : m_pText->Blocks()) {
    if (block.m_strKeyword == "MEASURE") CheckMeasure(block);
  }
  for (const ZuProjectItem& item : m_aItems) {
    if (item.m_covariance) CheckCovariance(item);
  }
  if (!bPhoto) {
    m_pText->Add(eZuSeverityError, 0, 0, "PHOTO", "no photo in the file", "PHOTO { ... } blocks");
  }
}

void ZuProject::CheckPhoto(const ZuKeywordBlock& block) {
  if (block.m_uId == 0) {
    const ZuUnknownKeyword* pMeant = block.MeantAs("PHOTOID");
    Error(block, "PHOTO without PHOTOID",
          pMeant != nullptr ? "PHOTOID in place of " + pMeant->m_strWritten
                            : "PHOTOID 1 \"image\" in each");
    return;
  }
  const auto [place, bFirst] = m_photoBlocks.emplace(block.m_uId, &block);
  if (bFirst) return;
  Error(block,
        "photo " + std::to_string(block.m_uId) + " stands twice, first in line " +
            std::to_string(place->second->m_uLine),
        "one PHOTO block for each id");
}

void ZuProject::CheckMeasure(const ZuKeywordBlock& block) {
  const std::string strPhoto = std::to_string(block.m_uId);
  if (block.m_uId == 0) {
    if (!block.m_bCut) Error(block, "MEASURE without PHOTOID", "PHOTOID of a PHOTO block");
    return;
  }
  const auto [place, bFirst] = m_measureBlocks.emplace(block.m_uId, &block);
  if (!bFirst) {
    Error(block,
          "measurements of photo " + strPhoto + " stand twice, first in line " +
              std::to_string(place->second->m_uLine),
          "one MEASURE block for each photo");
  } else if (m_photoBlocks.count(block.m_uId) == 0) {
    Error(block, "measurements of photo " + strPhoto + ", which is not in the file",
          "PHOTOID of a PHOTO block");
  }
}

void ZuProject::CheckCovariance(const ZuProjectItem& item) {
  const ZuKeywordBlock& block = *item.m_pBlock;
  for (const unsigned uPhoto : {(*item.m_covariance)[0], (*item.m_covariance)[1]}) {
    if (uPhoto == 0 || m_photoBlocks.count(uPhoto) != 0) continue;
    m_pText->Add(eZuSeverityWarning, block.m_uLine, block.m_uColumn, block.m_strKeyword,
                 "covariance of photo " + std::to_string(uPhoto) + ", which is not in the file",
                 "PHOTOID of a PHOTO block");
  }
}

// Numbers at the very end of a cut file may lack their last digits.
void ZuProject::DropCutRecord() {
  if (!IsCut()) return;
  const ZuKeywordBlock& block = m_pText->Blocks().back();
  ZuProjectItem& item = m_aItems.back();
  if (auto* const p = dynamic_cast<ZuOrthoPhoto*>(item.m_pRecord)) {
    delete m_OrthoPhotos.Subtract(p);
  } else if (auto* const pPhoto = dynamic_cast<ZuPhoto*>(item.m_pRecord)) {
    delete m_Photos.Subtract(pPhoto);
  } else if (auto* const pCamera = dynamic_cast<ZuCamera*>(item.m_pRecord)) {
    delete m_Cameras.Subtract(pCamera);
  }
  if (block.m_strKeyword == "LOKAL" && item.m_iLocalSystem >= 0) m_LocalSystems.pop_back();
  if (block.m_strKeyword == "MEASURE" && block.m_bLastRowCut) {
    delete m_Measurements[block.m_uId].SubtractLast();
  }
  if (block.m_strKeyword == "POINTS" && block.m_bLastRowCut) delete m_ObjectPoints.SubtractLast();
  item.m_pRecord = nullptr;
  item.m_iLocalSystem = -1;
}
