// What a photo of a project lacks for a computation.
#include <cmath>

#include "zu/numerics/rotation_defect.h"
#include "zu/photo/photo_view.h"
#include "zu/project/project.h"

namespace {

constexpr double kRotationDefect =
    1e-3;  // of R' R - 1: a rotation written with four decimals passes

std::string MeantText(const ZuUnknownKeyword& word) {
  return "line " + std::to_string(word.m_uLine) + " has " + word.m_strWritten + "; " +
         word.m_strMeant + " would be right";
}

// The keyword is missing, or what was meant as it.
std::string Missing(const ZuKeywordBlock& block, const char* szKeyword, const char* szRight) {
  if (block.Has(szKeyword)) return "";
  const ZuUnknownKeyword* pMeant = block.MeantAs(szKeyword);
  return std::string("has no ") + szKeyword + ": " +
         (pMeant != nullptr ? MeantText(*pMeant) : std::string(szRight) + " would be right");
}

std::string FirstOf(std::initializer_list<std::string> texts) {
  for (const std::string& strText : texts) {
    if (!strText.empty()) return strText;
  }
  return "";
}

bool IsTurned(const ZuPhoto& photo) {
  const ZuMatrix& R = photo.GetRotAOR();
  for (int i = 1; i <= 3; ++i) {
    for (int j = 1; j <= 3; ++j) {
      if (R[i][j] != (i == j ? 1.0 : 0.0)) return true;
    }
  }
  return false;
}

bool IsMoved(const ZuPhoto& photo) {
  double x = 0.0, y = 0.0, z = 0.0;
  photo.GetPosAOR(&x, &y, &z);
  return x != 0.0 || y != 0.0 || z != 0.0;
}

std::string Orientation(const ZuPhoto& photo, const ZuKeywordBlock& block) {
  if (!photo.HasAOR()) {
    const std::string strFlag = Missing(block, "ORIENTED", "ORIENTED 1 with AORM and AORV");
    return "is not oriented: " + (strFlag.empty() ? "ORIENTED 1 with AORM and AORV would be right"
                                                  : strFlag.substr(strFlag.find(": ") + 2));
  }
  // What was set since it was read, the file need not have, nor anything of a photo that was added.
  const bool bRead = block.m_uLine != 0;
  const std::string strMissing =
      FirstOf({!bRead || IsTurned(photo) ? "" : Missing(block, "AORM", "its rotation"),
               !bRead || IsMoved(photo) ? "" : Missing(block, "AORV", "its position")});
  if (!strMissing.empty()) return strMissing;
  if (!(ZuRotationDefect(photo.GetRotAOR()) <= kRotationDefect)) {
    return "has an AORM that is no rotation (line " + std::to_string(block.LineOf("AORM")) +
           "): right-handed axes of length 1 at right angles would be right";
  }
  return "";
}

std::string Camera(const ZuPhoto& photo, const ZuKeywordBlock& block) {
  const ZuCamera& camera = photo.GetCamera();
  const ZuKeywordBlock* pData = block.Find("CAMDATA");
  if (pData == nullptr && !block.Has("CAMERA") && camera.GetId() == 0) {
    const std::string strCamera = Missing(block, "CAMDATA", "CAMDATA { ID 1 C ... }");
    return "has no camera: " + strCamera.substr(strCamera.find(": ") + 2);
  }
  if (pData != nullptr) {
    for (const ZuUnknownKeyword& word : pData->m_unknown) {
      if (!word.m_strMeant.empty()) return "has an unknown camera keyword: " + MeantText(word);
    }
  }
  if (camera.GetId() == 0) return "has a camera without id: ID 1 would be right";
  if (camera.m_dC == 0.0) return "has a camera without constant: C in mm would be right";
  if (camera.m_iMode < eCameraModeZuvo || camera.m_iMode > eCameraModePinhole) {
    return "has a camera of mode " + std::to_string(camera.m_iMode) + ": MD 0 to 3 would be right";
  }
  return "";
}

std::string PixelChain(const ZuPhoto& photo, const ZuKeywordBlock& block) {
  for (const char* szKeyword :
       {"PRERESTRAFO", "MAINRESTRAFO", "POLYRESINVTRAFO", "PRERESEAU", "MAINRESEAU"}) {
    const ZuUnknownKeyword* pMeant = block.MeantAs(szKeyword);
    if (pMeant != nullptr) {
      return std::string("has no ") + szKeyword + ": " + MeantText(*pMeant);
    }
  }
  const bool bNone = photo.GetReseauPreTrafo().GetType() == 0 && photo.GetReseauTrafoType() == 0;
  if (bNone && photo.IsDigital()) {
    return "has no way from pixels to mm: PRERESTRAFO and MAINRESTRAFO would be right";
  }
  if (!ZuMapsPixels(photo)) {
    return "has a singular plane transformation: PRERESTRAFO and MAINRESTRAFO that carry the image "
           "to an area would be right";
  }
  return "";
}

}  // namespace

std::string ZuProject::Lacks(const ZuPhoto& photo, unsigned uNeeds) const {
  const auto found = m_photoBlocks.find(photo.GetId());
  if (found == m_photoBlocks.end() && photo.GetId() == 0) return "is not whole";
  static const ZuKeywordBlock none;
  const ZuKeywordBlock& block = found == m_photoBlocks.end() ? none : *found->second;
  return FirstOf({(uNeeds & eZuNeedOrientation) != 0 ? Orientation(photo, block) : "",
                  (uNeeds & eZuNeedCamera) != 0 ? Camera(photo, block) : "",
                  (uNeeds & eZuNeedPixels) != 0 ? PixelChain(photo, block) : ""});
}

std::string ZuProject::LacksRectification(unsigned uPhoto, unsigned uRectification) const {
  const auto found = m_photoBlocks.find(uPhoto);
  if (found == m_photoBlocks.end()) return "";
  for (const ZuKeywordBlock& block : found->second->m_blocks) {
    if (block.m_strKeyword != "ZUSPPLANE" || block.m_uId != uRectification) continue;
    for (const ZuUnknownKeyword& word : block.m_unknown) {
      if (!word.m_strMeant.empty()) return "has an unknown keyword: " + MeantText(word);
    }
  }
  return "";
}
