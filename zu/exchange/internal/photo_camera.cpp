#include "zu/exchange/internal/photo_camera.h"

#include <cmath>

#include "zu/exchange/internal/settled.h"
#include "zu/photo/photo.h"

namespace zu::internal {

namespace {

constexpr int kFitGrid = 24;       // cells across the image, of a fit
constexpr int kCheckGrid = 100;    // of the search for its largest error
constexpr double kGoodFit = 1e-3;  // [px]
constexpr double kReach = 1.1;     // RM in half diagonals of the image
constexpr unsigned kBrown = kFitFocal | kFitK1 | kFitK2 | kFitK3 | kFitTangential;
constexpr char kFolded[] =
    "its distortion folds within the image, or it sees 90 degrees from its axis; one that sees "
    "each "
    "direction once would be right";

// mm of a pixel: X = a0 + a1 x + a2 y, Y = a3 + a4 x + a5 y.
struct Affine {
  double a[6] = {};
};

ZuReseauTrafo TrafoOf(const Affine& affine, eZuTrafo2DType eType) {
  ZuMatrix matrix(3, 3);
  matrix[3][3] = 1.0;
  for (int i = 0; i < 2; ++i) {
    matrix[i + 1][1] = affine.a[3 * i + 1];
    matrix[i + 1][2] = affine.a[3 * i + 2];
    matrix[i + 1][3] = affine.a[3 * i];
  }
  ZuReseauTrafo trafo;
  trafo.SetFromMatrix(matrix, eType);
  return trafo;
}

// Exactly; k4 and beyond are passed over.
HeldCamera HoldBrown(const PinholeModel& model, const ZuImageSize& size, double dPixelSize) {
  HeldCamera held;
  held.size = size;
  const double w = size.dWidth, h = size.dHeight;
  held.pre = TrafoOf({{0.5 - 0.5 * w, 1.0, 0.0, 0.5 * h - 0.5, 0.0, -1.0}}, eZuTrafo2DAffin);
  const bool bSquare = model.fx == model.fy && model.skew == 0.0;
  const double px = dPixelSize, py = bSquare ? px : px * (model.fx / model.fy);
  const double ps = px * (model.skew / model.fy);
  held.main = TrafoOf({{0.0, px, ps, 0.0, 0.0, py}}, bSquare ? eZuTrafo2DHelmert : eZuTrafo2DAffin);
  ZuCamera& camera = held.camera;
  camera.m_iMode = eCameraModeCap;
  const double c = px * model.fx, dX = (model.cx + 0.5) - 0.5 * w, dY = (model.cy + 0.5) - 0.5 * h;
  camera.m_dC = c;
  camera.m_dXh = px * dX - ps * dY;
  camera.m_dYh = 0.0 - py * dY;
  camera.m_dA1 = model.k[0] / (c * c);
  camera.m_dA2 = model.k[1] / (c * c * c * c);
  camera.m_dA3 = model.k[2] / (c * c * c * c * c * c);
  camera.m_dC1 = model.p[1] / c;
  camera.m_dC2 = 0.0 - model.p[0] / c;
  camera.m_dRMax = kReach * 0.5 * std::hypot(px * w, py * h);
  return held;
}

// A photo's way from pixels to mm.
struct PixelWay {
  ZuMatrix pre{3, 3}, main{3, 3};
  double xx = 0.0, xy = 0.0, yx = 0.0, yy = 0.0;  // mm by pixels whose y counts down
  bool bAffine = false;
  bool bUp = false;  // the photo's pixels count up
  ZuImageSize size;
};

PixelWay WayOf(const ZuTrafo2d& pre, const ZuTrafo2d& main, const ZuImageSize& size) {
  PixelWay way;
  way.size = size;
  way.bAffine = true;
  for (const ZuTrafo2d* p : {&pre, &main}) {
    way.bAffine = way.bAffine && p->GetType() >= eZuTrafo2DNone && p->GetType() <= eZuTrafo2DAffin;
  }
  pre.BuildMatrix(&way.pre);
  main.BuildMatrix(&way.main);
  const ZuMatrix m = way.main * way.pre;
  way.bUp = m[1][1] * m[2][2] - m[1][2] * m[2][1] > 0.0;
  const double dSign = way.bUp ? -1.0 : 1.0;
  way.xx = m[1][1];
  way.xy = dSign * m[1][2];
  way.yx = m[2][1];
  way.yy = dSign * m[2][2];
  return way;
}

// The point that an affine map carries to p.
PlaneVector Before(const ZuMatrix& m, PlaneVector p) {
  const double x = p.x - m[1][3], y = p.y - m[2][3];
  if (m[2][1] == 0.0) {
    const double v = y / m[2][2];
    return {(x - m[1][2] * v) / m[1][1], v};
  }
  const double d = m[1][1] * m[2][2] - m[1][2] * m[2][1];
  return {(m[2][2] * x - m[1][2] * y) / d, (m[1][1] * y - m[2][1] * x) / d};
}

// The pixel of a place in mm, y down.
PlaneVector PixelOf(const PixelWay& way, PlaneVector mm) {
  PlaneVector pixel = Before(way.pre, Before(way.main, mm));
  if (way.bUp) pixel.y = (way.size.dHeight - 1.0) - pixel.y;
  return pixel;
}

// pixel = scale n + offset of undistorted n, y down: [xx xy; yx yy].
struct PixelScale {
  double xx, xy, yx, yy;
};

PixelScale ScaleOf(const PixelWay& way, double c) {
  if (way.yx == 0.0) {
    return {c / way.xx, c / way.yy * (way.xy / way.xx) + 0.0, 0.0, -c / way.yy};
  }
  const double d = way.xx * way.yy - way.xy * way.yx;
  return {c * way.yy / d, c * way.xy / d, -c * way.yx / d, -c * way.xx / d};
}

// Upper triangular scale times a turn of the camera; the turn is exactly 0 where yx is.
double TurnOff(PixelScale* pScale) {
  PixelScale& s = *pScale;
  if (s.yx == 0.0 && s.yy > 0.0) return 0.0;
  const double dTurn = std::atan2(s.yx, s.yy), sine = std::sin(dTurn), cosine = std::cos(dTurn);
  s = {s.xx * cosine - s.xy * sine, s.xx * sine + s.xy * cosine, 0.0, std::hypot(s.yx, s.yy)};
  return dTurn;
}

// Whether a camera of that mode is one of Brown's, and then the constant part of its radial factor.
bool IsBrownCamera(const ZuCamera& c, double* pdScale) {
  *pdScale = 1.0;
  if (c.m_iMode == eCameraModePinhole) return true;
  if (c.m_iMode != eCameraModeCap) return c.m_dA1 == 0.0 && c.m_dA2 == 0.0;
  const double s = c.m_dR0 * c.m_dR0;
  *pdScale = 1.0 - s * (c.m_dA1 + s * (c.m_dA2 + s * c.m_dA3));
  return c.m_dB1 == 0.0 && c.m_dB2 == 0.0 && *pdScale > 0.0;
}

// Exactly, of a camera of Brown's behind an affine way.
PinholeModel TellBrown(const ZuCamera& camera, const PixelWay& way, double dScale, double* pdTurn) {
  const bool bViva = camera.m_iMode == eCameraModeViva, bCap = camera.m_iMode == eCameraModeCap;
  const bool bPinhole = camera.m_iMode == eCameraModePinhole;
  const double c = std::fabs(camera.m_dC);
  const PlaneVector principal = bPinhole ? PlaneVector{}
                                : bViva  ? PlaneVector{camera.m_dXhViva, camera.m_dYhViva}
                                         : PlaneVector{camera.m_dXh, camera.m_dYh};
  const PlaneVector pixel = PixelOf(way, principal);
  PixelScale s = ScaleOf(way, c * dScale);
  *pdTurn = TurnOff(&s);
  PinholeModel model;
  model.fx = s.xx;
  model.fy = s.yy;
  model.skew = s.xy;
  model.cx = pixel.x;
  model.cy = pixel.y;
  if (!bCap) return model;
  model.k[0] = camera.m_dA1 * (c * c) / dScale;
  model.k[1] = camera.m_dA2 * (c * c * c * c) / dScale;
  model.k[2] = camera.m_dA3 * (c * c * c * c * c * c) / dScale;
  const double p1 = -camera.m_dC2 * c / dScale, p2 = camera.m_dC1 * c / dScale;
  const double sine = std::sin(*pdTurn), cosine = std::cos(*pdTurn);
  model.p = *pdTurn == 0.0 ? std::array{p1, p2}
                           : std::array{sine * p2 + cosine * p1, cosine * p2 - sine * p1};
  return model;
}

// Pixels of a grid with their directions in the photo's camera.
bool SightsOf(const ZuPhoto& photo, const ToldCamera& told, int iAcross,
              std::vector<Sight>* pSights) {
  ZuBikoTransform transform(&photo, eDigiToAdjusted, false);
  transform.SetExact(true);
  const double c = std::fabs(photo.GetCamera().m_dC);
  const double sine = std::sin(told.dTurn), cosine = std::cos(told.dTurn);
  for (const ZuPixel& pixel : PixelGrid(told.size, iAcross)) {
    double x = pixel.x, y = told.bPixelsUp ? told.size.dHeight - 1.0 - pixel.y : pixel.y, z = 0.0;
    if (!transform.Transform(&x, &y, &z)) return false;
    if (photo.GetCamera().m_iMode != eCameraModePinhole && !std::isfinite(x + y)) return false;
    const PlaneVector n{x / c, -y / c};
    pSights->push_back({{cosine * n.x - sine * n.y, sine * n.x + cosine * n.y}, pixel});
  }
  return true;
}

bool SightsOf(const PinholeModel& model, const ZuImageSize& size, int iAcross,
              std::vector<Sight>* pSights) {
  for (const ZuPixel& pixel : PixelGrid(size, iAcross)) {
    Sight sight{{}, pixel};
    if (!model.Unproject(pixel, &sight.n)) return false;
    pSights->push_back(sight);
  }
  return true;
}

// Whether the parameters are all that the model needs.
bool AreEnough(const PinholeModel& model, unsigned uParameters) {
  return (model.fx == model.fy || (uParameters & kFitOneFocal) == 0) &&
         (model.skew == 0.0 || (uParameters & kFitSkew) != 0) &&
         (model.k[0] == 0.0 || (uParameters & kFitK1) != 0) &&
         (model.k[1] == 0.0 || (uParameters & kFitK2) != 0) &&
         (model.k[2] == 0.0 || (uParameters & kFitK3) != 0) &&
         ((model.p[0] == 0.0 && model.p[1] == 0.0) || (uParameters & kFitTangential) != 0);
}

}  // namespace

void HeldCamera::StoreIn(ZuPhoto* pPhoto) const {
  pPhoto->SetCamera(camera);
  pPhoto->SetReseauPreTrafo(pre);
  pPhoto->SetReseauMainTrafo(main);
  pPhoto->SetDigiRegion(ZuRegion(0.0, 0.0, size.dWidth - 1.0, size.dHeight - 1.0));
}

HeldCamera HoldCamera(const PinholeModel& model, const ZuImageSize& size, double dPixelSize,
                      PinholeModel (*ThroughFile)(const PinholeModel&), CameraFit* pFit) {
  PinholeModel brown = model;
  if (!model.IsBrown()) {
    std::vector<Sight> sights, all;
    if (!SightsOf(model, size, kFitGrid, &sights) || !SightsOf(model, size, kCheckGrid, &all)) {
      pFit->strWhy = kFolded;
      return HeldCamera();
    }
    const bool bSkew = model.skew != 0.0 || model.tau != std::array<double, 2>{};
    const PinholeFit fit = FitPinhole(sights, bSkew ? kBrown | kFitSkew : kBrown);
    brown = fit.model;
    pFit->bFitted = true;
    pFit->largest = FindLargestError(all, brown);
  }
  using Parameters = std::array<double, 10>;
  const auto ModelOf = [](const Parameters& a) {
    PinholeModel m;
    m.fx = a[0], m.fy = a[1], m.skew = a[2], m.cx = a[3], m.cy = a[4];
    m.k = {a[5], a[6], a[7], 0.0, 0.0, 0.0, 0.0};
    m.p = {a[8], a[9]};
    return m;
  };
  const auto ParametersOf = [](const PinholeModel& m) {
    return Parameters{m.fx, m.fy, m.skew, m.cx, m.cy, m.k[0], m.k[1], m.k[2], m.p[0], m.p[1]};
  };
  const auto Return = [&](const Parameters& there) {
    const HeldCamera held = HoldBrown(ModelOf(there), size, dPixelSize);
    double dTurn = 0.0;
    return ParametersOf(
        ThroughFile(TellBrown(held.camera, WayOf(held.pre, held.main, size), 1.0, &dTurn)));
  };
  const HeldCamera held =
      HoldBrown(ModelOf(Settled(ParametersOf(brown), Return)), size, dPixelSize);
  const ZuCamera& c = held.camera;
  if (!std::isfinite(c.m_dC + c.m_dXh + c.m_dYh + c.m_dA1 + c.m_dA2 + c.m_dA3 + c.m_dC1 +
                     c.m_dC2)) {
    pFit->strWhy = "its parameters leave the range of numbers";
  }
  return held;
}

ToldCamera TellCamera(const ZuPhoto& photo, const std::vector<unsigned>& parameters,
                      CameraFit* pFit) {
  ToldCamera told;
  const ZuRegion& region = photo.GetDigiRegion();
  told.size = {region.Width() + 1.0, region.Height() + 1.0};
  const ZuCamera& camera = photo.GetCamera();
  const PixelWay way = WayOf(photo.GetReseauPreTrafo(), photo.GetReseauMainTrafo(), told.size);
  told.bPixelsUp = way.bUp;
  told.dPixelSize = std::hypot(way.xx, way.yx);
  double dScale = 1.0;
  const bool bBrown = IsBrownCamera(camera, &dScale) && way.bAffine;
  if (way.bAffine) told.model = TellBrown(camera, way, dScale, &told.dTurn);
  if (!told.model.IsFinite()) {
    pFit->strWhy = "its camera or its way from pixels to mm is not finite";
    return told;
  }
  for (const unsigned uParameters : parameters) {
    if (bBrown && AreEnough(told.model, uParameters)) return told;
  }
  std::vector<Sight> sights, all;
  if (!SightsOf(photo, told, kFitGrid, &sights) || !SightsOf(photo, told, kCheckGrid, &all)) {
    pFit->strWhy =
        "its camera is not one to one over the whole image; a larger RM, or an image "
        "within its domain, would be right";
    return told;
  }
  pFit->bFitted = true;
  pFit->largest.dError = std::numeric_limits<double>::infinity();
  for (const unsigned uParameters : parameters) {
    const PinholeFit fit = FitPinhole(sights, uParameters);
    if (!fit.bGood) continue;
    const LargestError largest = FindLargestError(all, fit.model);
    if (!(largest.dError < pFit->largest.dError)) continue;
    told.model = fit.model;
    pFit->largest = largest;
    if (largest.dError < kGoodFit) break;
  }
  return told;
}

}  // namespace zu::internal
