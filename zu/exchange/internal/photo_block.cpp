#include "zu/exchange/internal/photo_block.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <map>
#include <set>
#include <sstream>

#include "zu/exchange/internal/settled.h"
#include "zu/foundation/number_text.h"
#include "zu/foundation/path.h"
#include "zu/photo/photo.h"
#include "zu/project/project.h"

namespace zu::internal {

namespace {

constexpr double kLargestSide = 1e6;          // of an image [px]
constexpr size_t kLongestName = 4096;         // of a photo
constexpr double kUntoldPixel = 1.0 / 256.0;  // [mm]

std::string ShortNumber(double d) {
  char acText[32];
  return {acText,
          std::to_chars(acText, acText + sizeof acText, d, std::chars_format::general, 3).ptr};
}

void AddCamera(const BlockCamera& camera, const CameraFit& fit, double dMaxError,
               ZuExchangeReport* pReport) {
  const std::string strCamera = "camera " + std::to_string(camera.uId) + ": ";
  if (!fit.strWhy.empty()) FailExchange("", 0, strCamera + fit.strWhy, "");
  const LargestError& largest = fit.largest;
  if (fit.bFitted && !(largest.dError <= dMaxError)) {
    FailExchange("", 0,
                 strCamera + "its model is met to " + ShortNumber(largest.dError) +
                     " px only, at (" + ShortNumber(largest.pixel.x) + ", " +
                     ShortNumber(largest.pixel.y) + ")",
                 "a largest error of " + ShortNumber(dMaxError) +
                     " px, or another model; a larger --max-error takes it all the same");
  }
  pReport->cameras.push_back(
      {camera.uId, camera.strModel, fit.bFitted, largest.dError, largest.pixel.x, largest.pixel.y});
}

void TellOf(const std::string& strFile, eZuSeverity eSeverity, const std::string& strText,
            ZuExchangeReport* pReport) {
  ZuFinding finding;
  finding.m_strFile = strFile;
  finding.m_eSeverity = eSeverity;
  finding.m_strText = strText;
  pReport->findings.Add(finding);
}

// The project as it would be read from its file: only then are its records whole.
void Reread(ZuProject* pProject) {
  std::stringstream text;
  pProject->Export(text);
  if (pProject->Read(text)) return;
  for (const ZuFinding& finding : pProject->GetFindings()) {
    if (finding.m_eSeverity == eZuSeverityError) throw ExchangeFault{finding};
  }
}

template <class Record>
bool IsBefore(const Record& a, const Record& b) {
  return a.uId < b.uId;
}

// What makes the camera of a photo, as a key.
std::string CameraKey(const ZuPhoto& photo) {
  std::ostringstream key;
  photo.GetCamera().ExportFullData(key);
  photo.GetReseauPreTrafo().Export(key << '\n');
  photo.GetReseauMainTrafo().Export(key << '\n');
  const ZuRegion& region = photo.GetDigiRegion();
  key << '\n' << region.Width() << ' ' << region.Height();
  return key.str();
}

class BlockMaker {
 public:
  BlockMaker(const ZuProject& project, const BlockNeeds& needs, const ZuExportOptions& options,
             ZuExchangeReport* pReport)
      : m_project(project), m_needs(needs), m_options(options), m_pReport(pReport) {}

  PhotoBlock Make(const ZuPointList& points) {
    AddPoints(points);
    AddPoints(m_project.ObjectPoints());
    for (const ZuPhoto* p = m_project.PhotoList().First(); p != nullptr; p = p->Next()) {
      m_freeCamera = std::max(m_freeCamera, p->GetCamera().GetId());
    }
    unsigned uNeeds = eZuNeedPixels | eZuNeedCamera;
    if (m_needs.bOrientation) uNeeds |= eZuNeedOrientation;
    for (const ZuPhoto* p = m_project.PhotoList().First(); p != nullptr; p = p->Next()) {
      const std::string strLacks = m_project.Lacks(*p, uNeeds);
      if (strLacks.empty()) {
        AddPhoto(*p);
      } else {
        Warn("photo " + std::to_string(p->GetId()) + " " + strLacks + "; left out");
      }
    }
    if (m_uNoPoint > 0) {
      Warn(std::to_string(m_uNoPoint) + " measurements of points without coordinates; left out");
    }
    std::sort(m_block.cameras.begin(), m_block.cameras.end(), IsBefore<BlockCamera>);
    std::sort(m_pReport->cameras.begin(), m_pReport->cameras.end(), IsBefore<ZuExchangedCamera>);
    return std::move(m_block);
  }

 private:
  void Warn(const std::string& strText) { WarnExchange("", strText, m_pReport); }

  void AddPoints(const ZuPointList& points) {
    for (const ZuPoint* p = points.First(); p != nullptr; p = p->Next()) {
      if (p->GetId() == 0 || m_points.count(p->GetId()) > 0) continue;
      if (!std::isfinite(p->m_dX + p->m_dY + p->m_dZ)) {
        Warn("point " + std::to_string(p->GetId()) + " is not finite; left out");
        continue;
      }
      m_points.insert(p->GetId());
      m_block.points.push_back({p->GetId(), {p->m_dX, p->m_dY, p->m_dZ}});
    }
  }

  struct Known {
    ToldCamera told;
    unsigned uId;
  };

  const Known& CameraOf(const ZuPhoto& photo) {
    const auto [at, bNew] = m_cameras.try_emplace(CameraKey(photo));
    Known& known = at->second;
    if (!bNew) return known;
    CameraFit fit;
    known.told = TellCamera(photo, m_needs.parameters, &fit);
    known.uId = photo.GetCamera().GetId();
    if (!m_cameraIds.insert(known.uId).second) {
      m_cameraIds.insert(known.uId = ++m_freeCamera);
      Warn("photo " + std::to_string(photo.GetId()) + " has a camera " +
           std::to_string(photo.GetCamera().GetId()) + " of its own; written as camera " +
           std::to_string(known.uId));
    }
    const std::string strName = photo.GetCamera().GetName().chars();
    const BlockCamera camera{known.uId,       strName,          strName,
                             known.told.size, known.told.model, known.told.dPixelSize};
    CheckImageSize(camera.size, "photo " + std::to_string(photo.GetId()), 0);
    AddCamera(camera, fit, m_options.dMaxError, m_pReport);
    m_block.cameras.push_back(camera);
    return known;
  }

  void AddPhoto(const ZuPhoto& photo) {
    const Known& known = CameraOf(photo);
    BlockImage image;
    image.uId = photo.GetId();
    image.uCamera = known.uId;
    image.strName = photo.GetName().chars();
    image.bActive = photo.IsActive();
    image.bOriented = m_project.Lacks(photo, eZuNeedOrientation).empty();
    if (image.bOriented) {
      const ZuMatrix turn = ZuMatrix(3, 3).RotZAxis(known.told.dTurn);
      const ZuMatrix& R = photo.GetRotAOR();
      image.pose.R = known.told.dTurn == 0.0 ? ZuRotation(R) : ZuRotation(R * turn);
      photo.GetPosAOR(&image.pose.X0[0], &image.pose.X0[1], &image.pose.X0[2]);
    }
    std::set<unsigned> seen;
    const ZuPointList* pRows = m_project.FindMeasurements(photo.GetId());
    for (const ZuPoint* p = pRows == nullptr ? nullptr : pRows->First(); p != nullptr;
         p = p->Next()) {
      if (p->GetId() == 0 || (m_needs.bPoints && m_points.count(p->GetId()) == 0)) {
        ++m_uNoPoint;
      } else if (std::isfinite(p->m_dX + p->m_dY) && seen.insert(p->GetId()).second) {
        const double y = known.told.bPixelsUp ? known.told.size.dHeight - 1.0 - p->m_dY : p->m_dY;
        image.measures.push_back({p->GetId(), ZuPixel(p->m_dX, y)});
      }
    }
    m_pReport->uMeasurements += image.measures.size();
    m_block.images.push_back(std::move(image));
  }

  const ZuProject& m_project;
  const BlockNeeds& m_needs;
  const ZuExportOptions& m_options;
  ZuExchangeReport* m_pReport;
  PhotoBlock m_block;
  std::set<unsigned> m_points, m_cameraIds;
  std::map<std::string, Known> m_cameras;
  unsigned m_freeCamera = 0;
  std::size_t m_uNoPoint = 0;
};

// Mean over the points of their mean errors, and root mean square.
void TellErrors(const PhotoBlock& block, ZuExchangeReport* pReport) {
  std::map<unsigned, const BlockPoint*> points;
  for (const BlockPoint& point : block.points) points[point.uId] = &point;
  std::map<unsigned, const PinholeModel*> models;
  for (const BlockCamera& camera : block.cameras) models[camera.uId] = &camera.model;
  std::map<unsigned, std::pair<double, double>> errors;  // sum and number
  double dSquares = 0.0, dAll = 0.0;
  for (const BlockImage& image : block.images) {
    for (const BlockMeasure& measure : image.measures) {
      ZuPixel seen;
      const auto point = points.find(measure.uPoint);
      if (!image.bOriented || point == points.end() ||
          !SeePoint(image, *models[image.uCamera], *point->second, &seen)) {
        continue;
      }
      const double d = std::hypot(seen.x - measure.pixel.x, seen.y - measure.pixel.y);
      auto& error = errors[measure.uPoint];
      error.first += d;
      error.second += 1.0;
      dSquares += d * d;
      dAll += 1.0;
    }
  }
  double dSum = 0.0;
  for (const auto& error : errors) dSum += error.second.first / error.second.second;
  pReport->dMeanError = dSum / static_cast<double>(errors.size());
  pReport->dRms = std::sqrt(dSquares / dAll);
}

}  // namespace

void FailExchange(const std::string& strFile, std::uint64_t uLine, const std::string& strText,
                  const std::string& strRight) {
  ZuFinding finding;
  finding.m_strFile = strFile;
  finding.m_uLine = uLine;
  finding.m_strText = strText;
  finding.m_strRight = strRight;
  throw ExchangeFault{finding};
}

void WarnExchange(const std::string& strFile, const std::string& strText,
                  ZuExchangeReport* pReport) {
  TellOf(strFile, eZuSeverityWarning, strText, pReport);
}

void NoteExchange(const std::string& strFile, const std::string& strText,
                  ZuExchangeReport* pReport) {
  TellOf(strFile, eZuSeverityNote, strText, pReport);
}

const ZuExchangeFile& OneFile(const std::vector<ZuExchangeFile>& files) {
  if (files.size() != 1) FailExchange("", 0, "the format is one file", "its name");
  return files[0];
}

PinholeModel SameModel(const PinholeModel& model) { return model; }

ZuCameraPose SettledPose(const ZuCameraPose& pose,
                         ZuCameraPose (*ThereAndBack)(const ZuCameraPose&)) {
  using Numbers = std::pair<std::array<double, 9>, std::array<double, 3>>;
  const Numbers settled = Settled(Numbers(pose.R.r, pose.X0), [&](const Numbers& numbers) {
    const ZuCameraPose back = ThereAndBack({ZuRotation(numbers.first), numbers.second});
    return Numbers(back.R.r, back.X0);
  });
  return {ZuRotation(settled.first), settled.second};
}

bool IsFinitePose(const ZuCameraPose& pose) {
  double dSum = 0.0;
  for (const double d : pose.R.r) dSum += d;
  for (const double d : pose.X0) dSum += d;
  return std::isfinite(dSum);
}

bool IsRotation(const std::array<double, 9>& r) {
  constexpr double kNoRotation = 1e-6;
  for (size_t i = 0; i < 3; ++i) {
    for (size_t j = 0; j < 3; ++j) {
      const double d =
          r[3 * i] * r[3 * j] + r[3 * i + 1] * r[3 * j + 1] + r[3 * i + 2] * r[3 * j + 2];
      if (!(std::fabs(d - (i == j ? 1.0 : 0.0)) < kNoRotation)) return false;
    }
  }
  return r[0] * (r[4] * r[8] - r[5] * r[7]) - r[1] * (r[3] * r[8] - r[5] * r[6]) +
             r[2] * (r[3] * r[7] - r[4] * r[6]) >
         0.0;
}

std::string PlainName(std::string strName) {
  for (char& c : strName) {
    if (c == '"' || c == 0x7f || static_cast<unsigned char>(c) < 0x20) c = '_';
  }
  return strName;
}

std::size_t DropSecondMeasures(BlockImage* pImage) {
  std::set<unsigned> seen;
  return std::erase_if(pImage->measures, [&](const BlockMeasure& measure) {
    return !seen.insert(measure.uPoint).second;
  });
}

void WarnSecondMeasures(const std::string& strFile, std::size_t uDropped,
                        ZuExchangeReport* pReport) {
  if (uDropped == 0) return;
  WarnExchange(
      strFile,
      std::to_string(uDropped) + " measurements of a point that the photo has already; left out",
      pReport);
}

bool SeePoint(const BlockImage& image, const PinholeModel& model, const BlockPoint& point,
              ZuPixel* pPixel) {
  const auto& r = image.pose.R.r;
  double v[3] = {};
  for (size_t i = 0; i < 3; ++i) {
    for (size_t k = 0; k < 3; ++k) v[i] += r[3 * k + i] * (point.X[k] - image.pose.X0[k]);
  }
  if (!(v[2] < 0.0)) return false;
  *pPixel = model.Project({-v[0] / v[2], v[1] / v[2]});
  return true;
}

void CheckPhotoName(const std::string& strName, const std::string& strFile, std::uint64_t uLine) {
  const bool bBad = std::any_of(strName.begin(), strName.end(), [](char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == '"' || c == 0x7f;
  });
  if (strName.empty() || bBad || strName.size() > kLongestName) {
    FailExchange(strFile, uLine, "the photo's name " + ZuQuoted(strName) + " is none",
                 "the name of a picture");
  }
  bool bClimbs = ZuIsAbsolutePath(strName);
  std::string strPart;
  for (const char c : strName + '/') {
    if (c != '/' && c != '\\') {
      strPart += c;
      continue;
    }
    bClimbs = bClimbs || strPart == "..";
    strPart.clear();
  }
  if (bClimbs) {
    FailExchange(strFile, uLine,
                 "the photo's name " + ZuQuoted(strName) + " leads out of its folder",
                 "a name below the folder of the pictures");
  }
}

void CheckImageSize(const ZuImageSize& size, const std::string& strFile, std::uint64_t uLine) {
  for (const double d : {size.dWidth, size.dHeight}) {
    if (d >= 1.0 && d <= kLargestSide && d == std::floor(d)) continue;
    FailExchange(
        strFile, uLine,
        "an image of " + ShortNumber(size.dWidth) + " x " + ShortNumber(size.dHeight) + " pixels",
        "whole numbers from 1 to 1000000");
  }
}

void BlockToProject(const PhotoBlock& block, const ZuImportOptions& options,
                    PinholeModel (*ThroughFile)(const PinholeModel&), ZuProject* pProject,
                    ZuExchangeReport* pReport) {
  pProject->Clear();
  std::map<unsigned, HeldCamera> cameras;
  for (const BlockCamera& camera : block.cameras) {
    CameraFit fit;
    const double dTold = camera.dPixelSize > 0.0 ? camera.dPixelSize : kUntoldPixel;
    const double dPixelSize = options.dPixelSize > 0.0 ? options.dPixelSize : dTold;
    HeldCamera held = HoldCamera(camera.model, camera.size, dPixelSize, ThroughFile, &fit);
    held.camera.SetId(camera.uId);
    held.camera.SetName((camera.strName.empty() ? camera.strModel : camera.strName).c_str());
    AddCamera(camera, fit, options.dMaxError, pReport);
    pProject->CameraList().Add(new ZuCamera(held.camera));
    cameras.emplace(camera.uId, held);
  }
  for (const BlockImage& image : block.images) {
    auto* pPhoto = new ZuPhoto(image.uId, image.strName.c_str());
    pProject->PhotoList().Add(pPhoto);
    cameras.at(image.uCamera).StoreIn(pPhoto);
    pPhoto->SetActiveFlag(image.bActive ? eZuPhotoStateActive : eZuPhotoStateInactive);
    pPhoto->SetHasAOR(image.bOriented);
    if (image.bOriented) {
      pPhoto->SetRotAOR(image.pose.R.Matrix());
      pPhoto->SetPosAOR(image.pose.X0[0], image.pose.X0[1], image.pose.X0[2]);
    }
    ZuPointList& rows = pProject->Measurements(image.uId);
    for (const BlockMeasure& measure : image.measures) {
      rows.Add(new ZuPoint(measure.uPoint, measure.pixel.x, measure.pixel.y));
    }
    pReport->uMeasurements += image.measures.size();
  }
  for (const BlockPoint& point : block.points) {
    pProject->ObjectPoints().Add(new ZuPoint(point.uId, point.X[0], point.X[1], point.X[2]));
  }
  pReport->uPhotos = block.images.size();
  pReport->uPoints = block.points.size();
  Reread(pProject);
}

PhotoBlock ProjectToBlock(const ZuProject& project, const ZuPointList& points,
                          const BlockNeeds& needs, const ZuExportOptions& options,
                          ZuExchangeReport* pReport) {
  PhotoBlock block = BlockMaker(project, needs, options, pReport).Make(points);
  if (block.images.empty() && !needs.bOrientation) {
    FailExchange("", 0, "no photo with a camera", "photos with CAMERA, PRERESTRAFO, MAINRESTRAFO");
  }
  if (block.images.empty()) {
    FailExchange("", 0, "no oriented photo with a camera", "photos with ORIENTED 1, AORM and AORV");
  }
  pReport->uPhotos = block.images.size();
  pReport->uPoints = block.points.size();
  TellErrors(block, pReport);
  return block;
}

}  // namespace zu::internal
