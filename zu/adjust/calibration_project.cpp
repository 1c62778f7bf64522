#include "zu/adjust/calibration_project.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "zu/project/project.h"

namespace {

size_t Index(int i) { return static_cast<size_t>(i); }

// Start values of c over the larger side of the image, the most likely first.
constexpr double kConstants[] = {1.2, 0.8, 1.8, 0.55, 2.7};

constexpr unsigned Bits(std::initializer_list<int> parameters) {
  unsigned uBits = 0;
  for (const int k : parameters) uBits |= 1U << k;
  return uBits;
}

// Each set starts from the result of the one before.
constexpr unsigned kSets[] = {
    Bits({ZuNetworkC}),
    Bits({ZuNetworkC, ZuNetworkA1}),
    Bits({ZuNetworkC, ZuNetworkXh, ZuNetworkYh, ZuNetworkA1}),
    Bits({ZuNetworkC, ZuNetworkXh, ZuNetworkYh, ZuNetworkA1, ZuNetworkA2}),
    Bits(
        {ZuNetworkC, ZuNetworkXh, ZuNetworkYh, ZuNetworkA1, ZuNetworkA2, ZuNetworkC1, ZuNetworkC2}),
    Bits({ZuNetworkC, ZuNetworkXh, ZuNetworkYh, ZuNetworkA1, ZuNetworkA2, ZuNetworkA3, ZuNetworkC1,
          ZuNetworkC2}),
    Bits({ZuNetworkC, ZuNetworkXh, ZuNetworkYh, ZuNetworkA1, ZuNetworkA2, ZuNetworkA3, ZuNetworkB1,
          ZuNetworkB2, ZuNetworkC1, ZuNetworkC2})};

std::string NamesOf(unsigned uBits) {
  std::string strNames;
  for (int k = 0; k < ZuNetworkParameters; ++k) {
    if ((uBits >> k & 1U) == 0) continue;
    strNames += (strNames.empty() ? "" : ", ") + std::string(ZuNetworkParameterName(k));
  }
  return strNames;
}

class Calibrator {
 public:
  Calibrator(ZuProject* pProject, const ZuPointList& board, const ZuCalibrationOptions& options)
      : m_project(*pProject), m_board(board), m_options(options) {
    m_orientation.dSigma = options.dSigma;
    m_orientation.bSigmaInPixels = options.bSigmaInPixels;
    m_orientation.bAll = true;
  }

  ZuProjectCalibration Run() {
    PrepareCameras();
    if (m_constantless.empty()) {
      m_result.orientation = ZuOrientProject(&m_project, m_board, {}, m_orientation);
    } else {
      OrientWithoutConstant();
    }
    ZuNetworkInput input;
    input.dSigma = m_options.dSigma;
    input.bSigmaInPixels = m_options.bSigmaInPixels;
    m_result.made = ZuMakeNetwork(m_project, m_board, {}, input);
    if (m_result.orientation.CountGood() == 0 || m_result.made.network.photos.empty()) {
      m_result.result.status = ZuAdjustStatus::TooFew;
      m_result.result.strText = "no photo could be oriented from the board";
    } else {
      Adjust();
    }
    return std::move(m_result);
  }

 private:
  // Each measured photo gets a camera with id and mode; those without constant are remembered.
  void PrepareCameras() {
    const ZuCamera* pListed = m_project.CameraList().First();
    for (ZuPhoto* p = m_project.PhotoList().First(); p != nullptr; p = p->Next()) {
      const ZuPointList* pMeasured = m_project.FindMeasurements(p->GetId());
      if (pMeasured == nullptr || pMeasured->IsEmpty()) continue;
      ZuCamera camera = p->GetCamera();
      if (camera.GetId() == 0) {
        if (pListed != nullptr) {
          camera = *pListed;
        } else {
          camera.SetId(1);
          camera.m_iMode = eCameraModeCap;
        }
      }
      if (m_options.iMode >= 0) camera.m_iMode = m_options.iMode;
      p->SetCamera(camera);
      if (!(std::fabs(camera.m_dC) > 0.0) || !std::isfinite(camera.m_dC)) {
        m_constantless.push_back(p);
      }
    }
    for (ZuCamera* p = m_project.CameraList().First(); p != nullptr; p = p->Next()) {
      if (m_options.iMode >= 0) p->m_iMode = m_options.iMode;
    }
  }

  static double ImageSide(const ZuPhoto& photo) {
    const ZuRegion& region = photo.GetBikoRegion();
    return std::max(std::fabs(region.Right() - region.Left()),
                    std::fabs(region.Top() - region.Bottom()));
  }

  // The start value of c with which the photos fit the board best.
  void OrientWithoutConstant() {
    double dLeast = std::numeric_limits<double>::infinity(), dBest = kConstants[0];
    for (const double dFactor : kConstants) {
      SetConstants(dFactor);
      const double d = MedianRms(ZuOrientProject(&m_project, m_board, {}, m_orientation));
      if (!(d < dLeast)) continue;
      dLeast = d;
      dBest = dFactor;
    }
    SetConstants(dBest);
    m_result.orientation = ZuOrientProject(&m_project, m_board, {}, m_orientation);
    m_result.notes.push_back("c starts from the size of the image: " +
                             std::to_string(m_constantless[0]->GetCamera().m_dC) + " mm");
  }

  void SetConstants(double dFactor) {
    for (ZuPhoto* p : m_constantless) {
      ZuCamera camera = p->GetCamera();
      camera.m_dC = dFactor * ImageSide(*p);
      p->SetCamera(camera);
    }
    ZuCamera::DeleteInvAdjustTables();
  }

  static double MedianRms(const ZuProjectOrientation& orientation) {
    std::vector<double> rms;
    for (const ZuPhotoOrientation& photo : orientation.photos) {
      rms.push_back(photo.IsGood() ? photo.dRmsPixels : std::numeric_limits<double>::infinity());
    }
    std::sort(rms.begin(), rms.end());
    return rms.empty() ? std::numeric_limits<double>::infinity() : rms[rms.size() / 2];
  }

  // The parameters of the set that the camera has; those that are not estimated keep their value.
  unsigned Free(unsigned uSet) {
    unsigned uFree = 0;
    for (ZuNetworkCamera& camera : m_result.made.network.cameras) {
      for (int k = 0; k < ZuNetworkParameters; ++k) {
        const bool bFree = (uSet >> k & 1U) != 0 && ZuNetworkHasParameter(camera.camera, k);
        camera.adSd[Index(k)] = bFree ? kZuNetworkFree : 0.0;
        if (bFree) uFree |= 1U << k;
      }
    }
    return uFree;
  }

  ZuNetworkResult AdjustSet(unsigned uSet, bool bSnoop) {
    Free(uSet);
    ZuNetworkOptions options;
    options.test = m_options.test;
    options.test.bSnoop = bSnoop;
    return m_result.made.network.Adjust(options);
  }

  void StartFrom(const ZuNetworkResult& result) {
    ZuNetwork& network = m_result.made.network;
    for (size_t i = 0; i < network.cameras.size(); ++i) {
      network.cameras[i].camera = result.cameras[i];
    }
    for (size_t i = 0; i < network.photos.size(); ++i) {
      if (result.photoUsed[i]) network.photos[i] = result.photos[i];
    }
    for (size_t i = 0; i < network.points.size(); ++i) {
      if (result.pointUsed[i]) network.points[i].adPosition = result.points[i];
    }
  }

  void Adjust() {
    unsigned uLast = 0, uWanted = Free(m_options.uEstimate);
    std::string strWhy;
    for (const unsigned uSet : kSets) {
      unsigned uFree = Free(uSet);
      if (m_options.uEstimate != 0) uFree &= uWanted;
      if (uFree == uLast || uFree == 0) continue;
      ZuNetworkResult result = AdjustSet(uFree, false);
      if (result.status != ZuAdjustStatus::Good) {
        strWhy = result.strText;
        if (uLast == 0) m_result.result = std::move(result);
        continue;
      }
      StartFrom(result);
      uLast = uFree;
      strWhy.clear();
      m_result.result = std::move(result);
    }
    m_result.uEstimated = uLast;
    if (uLast == 0) return;
    if (!strWhy.empty()) {
      m_result.notes.push_back("no more than " + NamesOf(uLast) + " are estimated: " + strWhy);
    }
    Free(uLast);
    if (!m_options.test.bSnoop) return;
    m_result.result = AdjustSet(uLast, true);
  }

  ZuProject& m_project;
  const ZuPointList& m_board;
  const ZuCalibrationOptions& m_options;
  ZuOrientationOptions m_orientation;
  std::vector<ZuPhoto*> m_constantless;
  ZuProjectCalibration m_result;
};

}  // namespace

ZuProjectCalibration ZuCalibrateProject(ZuProject* pProject, const ZuPointList& board,
                                        const ZuCalibrationOptions& options) {
  return Calibrator(pProject, board, options).Run();
}
