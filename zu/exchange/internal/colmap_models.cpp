#include <algorithm>
#include <cmath>

#include "zu/exchange/internal/colmap.h"

namespace zu::internal {

namespace {

// Principal points count from the corner of the first pixel.
PinholeModel Colmap(Lens eLens, double fx, double fy, double cx, double cy) {
  PinholeModel model;
  model.eLens = eLens;
  model.fx = fx;
  model.fy = fy;
  model.cx = cx - 0.5;
  model.cy = cy - 0.5;
  return model;
}

template <Lens eLens>
PinholeModel OneFocal(const double* pd) {
  return Colmap(eLens, pd[0], pd[0], pd[1], pd[2]);
}

template <Lens eLens, size_t uTerms>
PinholeModel Radial(const double* pd) {
  PinholeModel model = OneFocal<eLens>(pd);
  std::copy(pd + 3, pd + 3 + uTerms, model.k.begin());
  return model;
}

PinholeModel Pinhole(const double* pd) {
  return Colmap(Lens::Perspective, pd[0], pd[1], pd[2], pd[3]);
}

PinholeModel Tangential(const double* pd) {
  PinholeModel model = Pinhole(pd);
  model.k[0] = pd[4];
  model.k[1] = pd[5];
  model.p = {pd[6], pd[7]};
  return model;
}

PinholeModel Full(const double* pd) {
  PinholeModel model = Tangential(pd);
  std::copy(pd + 8, pd + 12, model.k.begin() + 2);
  return model;
}

PinholeModel Fisheye(const double* pd) {
  PinholeModel model = Pinhole(pd);
  model.eLens = Lens::Equidistant;
  model.k = {pd[4], pd[5], pd[6], 0.0, 0.0, 0.0, pd[7]};
  return model;
}

PinholeModel FieldOfView(const double* pd) {
  PinholeModel model = Pinhole(pd);
  model.eLens = Lens::FieldOfView;
  model.dFieldOfView = pd[4];
  return model;
}

PinholeModel ThinPrismFisheye(const double* pd) {
  PinholeModel model = Tangential(pd);
  model.eLens = Lens::Equidistant;
  model.k[2] = pd[8];
  model.k[6] = pd[9];
  model.s = {pd[10], 0.0, pd[11], 0.0};
  return model;
}

template <size_t uTerms>
std::vector<double> ToRadial(const PinholeModel& m) {
  std::vector<double> values{m.fx, m.cx + 0.5, m.cy + 0.5};
  values.insert(values.end(), m.k.begin(), m.k.begin() + uTerms);
  return values;
}

std::vector<double> ToPinhole(const PinholeModel& m) {
  return {m.fx, m.fy, m.cx + 0.5, m.cy + 0.5};
}

std::vector<double> ToTangential(const PinholeModel& m) {
  return {m.fx, m.fy, m.cx + 0.5, m.cy + 0.5, m.k[0], m.k[1], m.p[0], m.p[1]};
}

std::vector<double> ToFull(const PinholeModel& m) {
  std::vector<double> values = ToTangential(m);
  values.insert(values.end(), m.k.begin() + 2, m.k.begin() + 6);
  return values;
}

constexpr Lens kPlain = Lens::Perspective, kFisheye = Lens::Equidistant;
const ColmapModel kModels[] = {
    {0, "SIMPLE_PINHOLE", 3, OneFocal<kPlain>, ToRadial<0>},
    {1, "PINHOLE", 4, Pinhole, ToPinhole},
    {2, "SIMPLE_RADIAL", 4, Radial<kPlain, 1>, ToRadial<1>},
    {3, "RADIAL", 5, Radial<kPlain, 2>, ToRadial<2>},
    {4, "OPENCV", 8, Tangential, ToTangential},
    {6, "FULL_OPENCV", 12, Full, ToFull},
    {5, "OPENCV_FISHEYE", 8, Fisheye, nullptr},
    {7, "FOV", 5, FieldOfView, nullptr},
    {8, "SIMPLE_RADIAL_FISHEYE", 4, Radial<kFisheye, 1>, nullptr},
    {9, "RADIAL_FISHEYE", 5, Radial<kFisheye, 2>, nullptr},
    {10, "THIN_PRISM_FISHEYE", 12, ThinPrismFisheye, nullptr},
};

}  // namespace

const BlockNeeds kColmapNeeds{
    {kFitFocal | kFitK1 | kFitK2 | kFitTangential,
     kFitFocal | kFitK1 | kFitK2 | kFitK3 | kFitRational | kFitTangential}};

const ColmapModel* FindColmapModel(int iId) {
  const auto* p = std::find_if(std::begin(kModels), std::end(kModels),
                               [&](const ColmapModel& model) { return model.iId == iId; });
  return p == std::end(kModels) ? nullptr : p;
}

const ColmapModel* FindColmapModel(std::string_view name) {
  const auto* p = std::find_if(std::begin(kModels), std::end(kModels),
                               [&](const ColmapModel& model) { return name == model.szName; });
  return p == std::end(kModels) ? nullptr : p;
}

std::string ColmapModelNames() {
  std::string strNames;
  for (const ColmapModel& model : kModels) {
    strNames += std::string(strNames.empty() ? "" : ", ") + model.szName;
  }
  return strNames;
}

PinholeModel ThroughColmap(const PinholeModel& model) {
  PinholeModel through = model;
  through.cx = (model.cx + 0.5) - 0.5;
  through.cy = (model.cy + 0.5) - 0.5;
  return through;
}

const ColmapModel* ChooseColmapModel(const PinholeModel& model, const std::string& strName) {
  const auto Holds = [&](const ColmapModel* p) {
    return p != nullptr && p->ToFile != nullptr &&
           p->FromFile(p->ToFile(model).data()) == ThroughColmap(model);
  };
  const ColmapModel* pNamed = FindColmapModel(strName);
  if (Holds(pNamed)) return pNamed;
  const auto* p = std::find_if(std::begin(kModels), std::end(kModels),
                               [&](const ColmapModel& each) { return Holds(&each); });
  return p == std::end(kModels) ? nullptr : p;
}

}  // namespace zu::internal
