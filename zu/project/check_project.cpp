// What is not plausible in a project.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>

#include "zu/foundation/sort_helper.h"
#include "zu/numerics/rotation_defect.h"
#include "zu/photo/photo_view.h"
#include "zu/project/check.h"
#include "zu/project/internal/check_kinds.h"
#include "zu/project/internal/plausible.h"
#include "zu/project/project.h"

namespace {

constexpr double kRotationDefect = 1e-3;  // of R' R - 1
constexpr double kShortestCamera = 0.1;   // camera constant over the image's diagonal
constexpr double kLongestCamera = 50.0;

// A block of older files that nothing needs any more.
constexpr char kPassedOver[] = "TS15CAM";

class ProjectCheck {
 public:
  ProjectCheck(const ZuProject& project, const std::string& strFile, ZuFindingList* pFindings)
      : m_project(project),
        m_strFile(strFile),
        m_photos(&project.PhotoList()),
        m_findings(*pFindings) {}

  void Run(const std::string& strFolder) {
    CheckIds();
    // Values beside an error may mean anything, and rows and points are not one to one.
    if (m_project.GetFindings().GetErrorCount() > 0) return;
    const bool bImages = !strFolder.empty() && HasAnyImage(strFolder);
    for (const ZuPhoto* p = m_project.PhotoList().First(); p != nullptr; p = p->Next()) {
      const ZuKeywordBlock* const pBlock = m_project.FindPhotoBlock(p->GetId());
      if (pBlock == nullptr) continue;
      if (bImages) CheckImage(*p, *pBlock, strFolder);
      CheckOrientation(*p, *pBlock);
      CheckCamera(*p, *pBlock);
      CheckReseau(*p, *pBlock);
      CheckQuarterTurns(*p, *pBlock);
    }
    for (const ZuProjectItem& item : m_project.GetItems()) {
      if (item.m_pBlock == nullptr || item.m_pBlock->m_strKeyword != "ORTHOPHOTO") continue;
      if (const auto* p = dynamic_cast<const ZuOrthoPhoto*>(item.m_pRecord)) {
        CheckQuarterTurns(*p, *item.m_pBlock);
      }
    }
    CheckPixelAxes();
    for (const ZuProjectItem& item : m_project.GetItems()) {
      if (item.m_pBlock == nullptr) continue;
      if (item.m_pBlock->m_strKeyword == "MEASURE") CheckMeasure(*item.m_pBlock);
      if (item.m_pBlock->m_strKeyword == "POINTS") CheckDoubled(*item.m_pBlock, "point ", "");
    }
    CheckPositions();
    zu::internal::CheckAngleUnits(m_project, m_strFile, &m_findings);
    if (!strFolder.empty()) {
      zu::internal::CheckReseauNames(m_project, m_strFile, strFolder, &m_findings);
    }
  }

 private:
  void Warn(ZuKeywordPlace place, const char* szKeyword, const std::string& strText,
            const std::string& strRight) {
    m_findings.Add({m_strFile, place.m_uLine, place.m_uColumn, eZuSeverityWarning, szKeyword,
                    strText, strRight});
  }
  static ZuKeywordPlace PlaceOf(const ZuKeywordBlock& block) {
    return {block.m_uLine, block.m_uColumn};
  }
  static std::string Name(const ZuPhoto& photo) { return "photo " + std::to_string(photo.GetId()); }

  // Of cameras, planes and orthophotos; those of photos are errors of the reading.
  void CheckIds() {
    std::map<std::pair<std::string, unsigned>, unsigned> lines;
    for (const ZuProjectItem& item : m_project.GetItems()) {
      if (item.m_pRecord == nullptr || item.m_pBlock->m_strKeyword == "PHOTO") continue;
      const unsigned uId = item.m_pRecord->GetId();
      const ZuKeywordBlock& block = *item.m_pBlock;
      const auto [place, bFirst] = lines.emplace(std::pair(block.m_strKeyword, uId), block.m_uLine);
      if (bFirst) continue;
      Warn(PlaceOf(block), block.m_strKeyword.c_str(),
           block.m_strKeyword + " " + std::to_string(uId) + " stands twice, first in line " +
               std::to_string(place->second),
           "one block for each id");
    }
  }

  static bool Exists(const std::string& strFolder, const ZuPhoto& photo) {
    std::error_code error;
    const std::filesystem::path name(photo.GetName().chars());
    return std::filesystem::exists(std::filesystem::path(strFolder) / name, error);
  }
  bool HasAnyImage(const std::string& strFolder) const {
    for (const ZuPhoto* p = m_project.PhotoList().First(); p != nullptr; p = p->Next()) {
      if (!p->GetName().empty() && Exists(strFolder, *p)) return true;
    }
    return false;
  }
  void CheckImage(const ZuPhoto& photo, const ZuKeywordBlock& block, const std::string& strFolder) {
    if (photo.GetName().empty() || Exists(strFolder, photo)) return;
    Warn(block.PlaceOf("PHOTOID"), "PHOTOID",
         std::string("no image file ") + photo.GetName().chars(),
         "a file beside those of the other photos");
  }

  void CheckOrientation(const ZuPhoto& photo, const ZuKeywordBlock& block) {
    if (!photo.HasAOR()) return;
    const ZuKeywordPlace place = block.PlaceOf("AORM");
    if (place.m_uLine == 0) {
      Warn(block.PlaceOf("ORIENTED"), "ORIENTED", Name(photo) + " has no AORM", "its rotation");
    } else if (!(ZuRotationDefect(photo.GetRotAOR()) <= kRotationDefect)) {
      Warn(place, "AORM", "the matrix is no rotation",
           "right-handed axes of length 1 at right angles");
    }
    if (!block.Has("AORV")) {
      Warn(block.PlaceOf("ORIENTED"), "ORIENTED", Name(photo) + " has no AORV", "its position");
    }
  }

  void CheckCamera(const ZuPhoto& photo, const ZuKeywordBlock& block) {
    const ZuKeywordBlock* const pData = block.Find("CAMDATA");
    const ZuCamera& camera = photo.GetCamera();
    if (pData == nullptr) return;
    const ZuKeywordPlace place = pData->Has("C") ? pData->PlaceOf("C") : PlaceOf(*pData);
    if (!m_project.CameraList().IsEmpty() &&
        m_project.CameraList().Find(camera.GetId()) == nullptr) {
      Warn(pData->PlaceOf("ID"), "ID",
           "camera " + std::to_string(camera.GetId()) + " is not among the CAMERA blocks",
           "the id of one of them");
    }
    if (camera.m_dC == 0.0) {
      Warn(PlaceOf(*pData), "CAMDATA", "the camera has no constant", "C in mm");
      return;
    }
    const ZuRegion region = photo.GetBikoRegion();
    const double dWidth = std::fabs(region.Width()), dHeight = std::fabs(region.Height());
    const double dRatio = std::fabs(camera.m_dC) / std::hypot(dWidth, dHeight);
    if (!photo.IsDigital() || !std::isfinite(dRatio)) return;
    if (dRatio < kShortestCamera || dRatio > kLongestCamera) {
      Warn(place, "C",
           "the camera constant does not fit an image of " + Shown(dWidth) + " x " +
               Shown(dHeight) + " mm",
           "C in mm");
    }
    if (std::fabs(camera.m_dXh) > 0.5 * dWidth || std::fabs(camera.m_dYh) > 0.5 * dHeight) {
      const bool bX = std::fabs(camera.m_dXh) > 0.5 * dWidth;
      const char* const szKeyword =
          bX ? (pData->Has("XH") ? "XH" : "X0") : (pData->Has("YH") ? "YH" : "Y0");
      Warn(pData->PlaceOf(szKeyword), szKeyword, "the principal point lies outside the image",
           "its distance from the image centre in mm");
    }
  }

  // Whether y of pixels and image count the same way: 1; the other way: -1; not known: 0.
  static int PixelTurn(const ZuPhoto& photo) {
    if (photo.GetReseauPreTrafo().GetType() == 0 && photo.GetReseauTrafoType() == 0) return 0;
    ZuPoint origin(1, 0.0, 0.0), right(1, 1.0, 0.0), down(1, 0.0, 1.0);
    for (ZuPoint* p : {&origin, &right, &down}) {
      if (!photo.ConvertBiko(p, eDigiToBiko)) return 0;
    }
    const double dArea = (right.m_dX - origin.m_dX) * (down.m_dY - origin.m_dY) -
                         (right.m_dY - origin.m_dY) * (down.m_dX - origin.m_dX);
    return dArea > 0.0 ? 1 : dArea < 0.0 ? -1 : 0;
  }

  // A project counts its pixels one way; the photos that count the other way are told.
  void CheckPixelAxes() {
    std::map<int, int> counts;
    for (const ZuPhoto* p = m_project.PhotoList().First(); p != nullptr; p = p->Next()) {
      ++counts[PixelTurn(*p)];
    }
    if (counts[1] == counts[-1]) return;
    const int iWrong = counts[1] < counts[-1] ? 1 : -1;
    for (const ZuPhoto* p = m_project.PhotoList().First(); p != nullptr; p = p->Next()) {
      const ZuKeywordBlock* const pBlock = m_project.FindPhotoBlock(p->GetId());
      if (pBlock == nullptr || PixelTurn(*p) != iWrong) continue;
      const char* const szKeyword = pBlock->Has("PRERESTRAFO") ? "PRERESTRAFO" : "MAINRESTRAFO";
      Warn(pBlock->PlaceOf(szKeyword), szKeyword,
           "y is counted the other way than in the other photos", "the sign of the others");
    }
  }

  void CheckReseau(const ZuPhoto& photo, const ZuKeywordBlock& block) {
    if (!block.Has("RESEAUSUBID") || block.Has("RESEAUFILE")) return;
    Warn(block.PlaceOf("RESEAUSUBID"), "RESEAUSUBID", Name(photo) + " names no reseau",
         "RESEAUFILE \"name\"");
  }

  void CheckQuarterTurns(const ZuPhoto& photo, const ZuKeywordBlock& block) {
    if (photo.GetDigPictRot() >= 0 && photo.GetDigPictRot() <= 3) return;
    Warn(block.PlaceOf("DIGITALROT"), "DIGITALROT",
         std::to_string(photo.GetDigPictRot()) + " is no number of quarter turns", "0 to 3");
  }

  void CheckDoubled(const ZuKeywordBlock& block, const std::string& strWhat,
                    const std::string& strOf) {
    for (const ZuDoubledRow& row : block.m_doubled) {
      Warn({row.m_uLine, row.m_uColumn}, "POINTS",
           strWhat + std::to_string(row.m_uId) + strOf + " stands twice, first in line " +
               std::to_string(row.m_uFirstLine),
           "one row for each id");
    }
  }

  void CheckMeasure(const ZuKeywordBlock& block) {
    const std::string strPhoto = std::to_string(block.m_uId);
    CheckDoubled(block, "measurement ", " of photo " + strPhoto);
    const ZuPhoto* const pPhoto = m_photos.Find(block.m_uId);
    const ZuPointList* const pPoints = m_project.FindMeasurements(block.m_uId);
    if (pPhoto == nullptr || pPoints == nullptr) return;
    std::size_t u = 0;
    for (const ZuPoint* p = pPoints->First(); p != nullptr && u < block.m_rows.size();
         p = p->Next(), ++u) {
      if (ZuIsInImage(*pPhoto, p->m_dX, p->m_dY)) continue;
      Warn(block.m_rows[u], "POINTS",
           "point " + std::to_string(p->GetId()) + " lies outside the image of photo " + strPhoto,
           "a pixel inside DIGIREGION");
    }
  }

  // Of projection centres and object points.
  void CheckPositions() {
    std::vector<zu::internal::PlacedPoint> centres, points;
    std::vector<ZuPoint> store;
    store.reserve(static_cast<std::size_t>(m_project.PhotoList().Count()));
    for (const ZuPhoto* p = m_project.PhotoList().First(); p != nullptr; p = p->Next()) {
      const ZuKeywordBlock* const pBlock = m_project.FindPhotoBlock(p->GetId());
      if (!p->HasAOR() || pBlock == nullptr || !pBlock->Has("AORV")) continue;
      const ZuVector& X0 = p->GetPosAOR();
      store.emplace_back(p->GetId(), X0[1], X0[2], X0[3]);
      centres.push_back({&store.back(), pBlock->PlaceOf("AORV")});
    }
    zu::internal::CheckUnits(centres, m_strFile, "projection centre of photo", &m_findings);
    std::vector<ZuKeywordPlace> places;
    for (const ZuProjectItem& item : m_project.GetItems()) {
      if (item.m_pBlock == nullptr || item.m_pBlock->m_strKeyword != "POINTS") continue;
      places.insert(places.end(), item.m_pBlock->m_rows.begin(), item.m_pBlock->m_rows.end());
    }
    for (const ZuPoint* p = m_project.ObjectPoints().First();
         p != nullptr && points.size() < places.size(); p = p->Next()) {
      points.push_back({p, places[points.size()]});
    }
    zu::internal::CheckUnits(points, m_strFile, "point", &m_findings);
  }

  static std::string Shown(double dLength) {
    std::string strText = std::to_string(dLength);
    return strText.substr(0, strText.find('.') + 2);
  }

  const ZuProject& m_project;
  const std::string& m_strFile;
  const ZuSortHelper<ZuPhoto> m_photos;
  ZuFindingList& m_findings;
};

}  // namespace

void ZuCheckProject(const ZuProject& project, const std::string& strFile,
                    const std::string& strFolder, ZuFindingList* pFindings) {
  for (const ZuFinding& finding : project.GetFindings()) {
    if (finding.m_strKeyword != kPassedOver) pFindings->Add(finding);
  }
  ProjectCheck(project, strFile, pFindings).Run(strFolder);
}
