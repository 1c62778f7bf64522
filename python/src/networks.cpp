// Photos oriented, cameras calibrated, networks adjusted.
#include <algorithm>
#include <cmath>

#include "columns.h"
#include "project_types.h"
#include "tests.h"
#include "zu/adjust/calibration_project.h"
#include "zu/adjust/error_ellipsoid.h"
#include "zu/adjust/network_project.h"
#include "zu/adjust/orientation_project.h"

namespace {

constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();

std::size_t At(int i) { return static_cast<std::size_t>(i); }

void WarnOfNetwork(const std::string& strText) {
  py::module_::import("zu._errors").attr("warn")(ToStr(strText));
}

bool IsPixels(const std::string& strUnit) {
  static const char* const kSigmaUnits[] = {"px", "mm", nullptr};
  return FindWord("unit", strUnit, kSigmaUnits) == 0;
}

double ToSigma(double dSigma) {
  if (dSigma > 0.0 && std::isfinite(dSigma)) return dSigma;
  throw py::value_error("sigma: a standard deviation above 0 would be right");
}

// Points of an argument that may be left out.
class OptionalPoints {
 public:
  OptionalPoints(const py::object& value, const char* szArgument) {
    if (!value.is_none()) m_points.emplace(value, szArgument);
  }
  const ZuPointList& List() const { return m_points ? m_points->List() : m_none; }

 private:
  std::optional<PointsArgument> m_points;
  ZuPointList m_none;
};

// --- Orientation ---------------------------------------------------------------------------------

std::string UnorientedText(const ZuPhotoOrientation& photo) {
  return "photo " + std::to_string(photo.uId) + " could not be oriented: " + photo.strWhy;
}

void FillRotation(const ZuMatrix& rotation, double* pd) {
  for (int i = 0; i < 9; ++i) pd[i] = rotation.GetElemZeroIndex(i / 3, i % 3);
}

void FillNone(double* pd, int n) { std::fill_n(pd, n, kNoNumber); }

bool IsFound(const ZuPhotoOrientation& p) { return p.IsGood(); }
bool HasCovariance(const ZuPhotoOrientation& p) {
  return p.IsGood() && p.eWay != ZuOrientationWay::Kept;
}

// Of each photo that was found, else NaN.
template <class Fill>
py::object PoseColumn(const ZuProjectOrientation& o, std::vector<py::ssize_t> shape, int n,
                      bool (*pfnHas)(const ZuPhotoOrientation&), Fill fill) {
  return NumbersBy(o.photos, shape, [&](const ZuPhotoOrientation& p, double* pd) {
    pfnHas(p) ? fill(p, pd) : FillNone(pd, n);
  });
}

py::list Alternatives(const ZuProjectOrientation& o) {
  py::list all;
  for (const ZuPhotoOrientation& photo : o.photos) {
    py::list poses;
    for (const ZuPose& pose : photo.alternatives) {
      double* pd = nullptr;
      const py::object rotation = NewArray({3, 3}, &pd);
      FillRotation(pose.rotation, pd);
      poses.append(py::make_tuple(rotation, NewArrayOf({3}, pose.position.GetData())));
    }
    all.append(poses);
  }
  return all;
}

py::object SdsOfPose(const ZuProjectOrientation& o, std::size_t uFirst) {
  return PoseColumn(o, {3}, 3, &HasCovariance, [uFirst](const ZuPhotoOrientation& p, double* pd) {
    for (std::size_t k = 0; k < 3; ++k) pd[k] = std::sqrt(p.pose.covariance[7 * (uFirst + k)]);
  });
}

void TellOrientation(const ZuProjectOrientation& found) {
  for (const ZuPhotoOrientation& photo : found.photos) {
    if (!photo.IsGood()) WarnOfNetwork(UnorientedText(photo));
    if (!photo.alternatives.empty()) {
      WarnOfNetwork("photo " + std::to_string(photo.uId) +
                    ": other poses fit as well; see alternatives");
    }
  }
}

ZuProjectOrientation Orient(PyProject& project, const py::object& control, const py::object& approx,
                            double dSigma, const std::string& strUnit, bool bMissing,
                            unsigned uSeed) {
  const OptionalPoints known(control, "control"), rough(approx, "approx");
  ZuOrientationOptions options;
  options.bSigmaGiven = dSigma != 0.0;
  if (options.bSigmaGiven) options.dSigma = ToSigma(dSigma);
  options.bSigmaInPixels = IsPixels(strUnit);
  options.bAll = !bMissing;
  options.uSeed = uSeed;
  ZuProjectOrientation found;
  {
    const Writing writing(project.gate);
    const py::gil_scoped_release release;
    found = ZuOrientProject(&project.project, known.List(), rough.List(), options);
  }
  if (found.CountGood() == 0) {
    const std::string strWhy =
        found.photos.empty() ? "no photo with measurements" : UnorientedText(found.photos[0]);
    RaiseAdjustment("no photo could be oriented", strWhy, "", py::cast(found));
  }
  TellOrientation(found);
  return found;
}

void BindOrientation(py::module_& m) {
  using O = ZuProjectOrientation;
  using P = ZuPhotoOrientation;
  py::class_<O> orientation(m, "Orientation",
                            "Orientations of n photos, in the order of the project. What was not "
                            "found is NaN.");
  orientation.def("__len__", [](const O& o) { return o.photos.size(); });
  AddColumns<O>(
      orientation,
      {{"free", [](const O& o) -> py::object { return py::bool_(o.bFree); },
        "No known point took part: a frame of its own, centre of the points at the origin, mean "
        "distance 1."},
       {"photo_ids", [](const O& o) { return IdsBy(o.photos, [](const P& p) { return p.uId; }); },
        "(n,)."},
       {"names",
        [](const O& o) {
          return TextsBy(o.photos, [](const P& p) -> const std::string& { return p.strName; });
        },
        "n of str."},
       {"good", [](const O& o) { return BoolsBy(o.photos, IsFound); }, "Which were found, (n,)."},
       {"ways",
        [](const O& o) {
          return TextsBy(o.photos, [](const P& p) { return ZuOrientationWayText(p.eWay); });
        },
        "By what, n of str."},
       {"why",
        [](const O& o) {
          return TextsBy(o.photos, [](const P& p) -> const std::string& { return p.strWhy; });
        },
        "Why not, n of str."},
       {"measured",
        [](const O& o) { return IntsBy(o.photos, [](const P& p) { return p.iMeasured; }); },
        "Image points that can be used, (n,)."},
       {"points", [](const O& o) { return IntsBy(o.photos, [](const P& p) { return p.iPoints; }); },
        "Image points in the orientation, (n,)."},
       {"rms_pixels",
        [](const O& o) {
          return PoseColumn(o, {}, 1, &HasCovariance,
                            [](const P& p, double* pd) { *pd = p.dRmsPixels; });
        },
        "Of the lengths of their residuals, (n,)."},
       {"positions",
        [](const O& o) {
          return PoseColumn(o, {3}, 3, &IsFound, [](const P& p, double* pd) {
            std::copy_n(p.pose.position.GetData(), 3, pd);
          });
        },
        "Projection centres, (n, 3)."},
       {"position_sd", [](const O& o) { return SdsOfPose(o, 3); }, "(n, 3)."},
       {"rotations",
        [](const O& o) {
          return PoseColumn(o, {3, 3}, 9, &IsFound,
                            [](const P& p, double* pd) { FillRotation(p.pose.rotation, pd); });
        },
        "Image system to object space, (n, 3, 3)."},
       {"rotation_sd", [](const O& o) { return SdsOfPose(o, 0); },
        "Of small rotations about the image axes, (n, 3) rad."},
       {"angles",
        [](const O& o) {
          return PoseColumn(o, {3}, 3, &IsFound,
                            [](const P& p, double* pd) { std::copy_n(p.angles.data(), 3, pd); });
        },
        "a, b, c of rotation = Ry(b) Rx(a) Rz(c), (n, 3) rad."},
       {"angles_sd",
        [](const O& o) {
          return PoseColumn(o, {3}, 3, &HasCovariance,
                            [](const P& p, double* pd) { std::copy_n(p.anglesSd.data(), 3, pd); });
        },
        "(n, 3) rad."},
       {"covariances",
        [](const O& o) {
          return PoseColumn(o, {6, 6}, 36, &HasCovariance, [](const P& p, double* pd) {
            std::copy_n(p.pose.covariance.data(), 36, pd);
          });
        },
        "Of the small rotations and the position, (n, 6, 6)."},
       {"alternatives", [](const O& o) -> py::object { return Alternatives(o); },
        "Poses that fit as well: of each photo a list of (rotation, position)."}});
}

// --- Tests of observations -----------------------------------------------------------------------

// One group of observations with what it belongs to.
struct PyObservation {
  unsigned uPhoto = 0, uId = 0, uTo = 0;
  const ZuNetworkTest* pTest = nullptr;
  double adResidual[3] = {};
  int aiAxis[3] = {0, 1, 2};  // of the test's elements
};

struct PyNetwork {
  ZuNetworkOfProject made;
  ZuNetworkResult result;
  ZuProjectOrientation orientation;
  std::vector<std::size_t> order;  // of the points, by id

  const ZuNetwork& Input() const { return made.network; }
};

struct PyObservations {
  std::shared_ptr<const PyNetwork> pNetwork;  // keeps the tests
  std::vector<PyObservation> rows;
  int iDimension = 0;
};

using TestField = double (ZuNetworkTest::*)[3];

py::object TestColumn(const PyObservations& o, TestField pField) {
  return NumbersBy(o.rows, {o.iDimension}, [&](const PyObservation& row, double* pd) {
    FillNone(pd, o.iDimension);
    for (int k = 0; k < row.pTest->n; ++k) pd[row.aiAxis[k]] = (row.pTest->*pField)[k];
  });
}

void BindObservations(py::module_& m) {
  using O = PyObservations;
  using R = PyObservation;
  py::class_<O> observations(m, "Observations",
                             "What a network tells of n groups of m observations each, as columns; "
                             "NaN where an axis was not observed.");
  observations.def("__len__", [](const O& o) { return o.rows.size(); });
  AddColumns<O>(
      observations,
      {{"photo_ids", [](const O& o) { return IdsBy(o.rows, [](const R& r) { return r.uPhoto; }); },
        "Of image points, (n,)."},
       {"ids", [](const O& o) { return IdsBy(o.rows, [](const R& r) { return r.uId; }); },
        "Points, (n,)."},
       {"to_ids", [](const O& o) { return IdsBy(o.rows, [](const R& r) { return r.uTo; }); },
        "Second points of distances, (n,)."},
       {"used",
        [](const O& o) { return BoolsBy(o.rows, [](const R& r) { return r.pTest->bUsed; }); },
        "False: left out or set aside, (n,)."},
       {"controlled",
        [](const O& o) { return BoolsBy(o.rows, [](const R& r) { return r.pTest->bControlled; }); },
        "Every redundancy number reaches the least one, (n,)."},
       {"residuals",
        [](const O& o) {
          return NumbersBy(o.rows, {o.iDimension}, [&o](const R& r, double* pd) {
            std::copy_n(r.adResidual, o.iDimension, pd);
          });
        },
        "Adjusted minus observed, (n, m): of image points in pixels, else in the unit of the "
        "project."},
       {"residuals_mm", [](const O& o) { return TestColumn(o, &ZuNetworkTest::adV); },
        "The same in the unit that was adjusted, of image points mm with y up, (n, m)."},
       {"redundancy", [](const O& o) { return TestColumn(o, &ZuNetworkTest::adR); },
        "Redundancy numbers from 0 to 1, (n, m)."},
       {"w", [](const O& o) { return TestColumn(o, &ZuNetworkTest::adW); },
        "Standardised residuals, sigma a priori, (n, m)."},
       {"smallest_error", [](const O& o) { return TestColumn(o, &ZuNetworkTest::adNabla); },
        "Smallest error that is found, in the unit of residuals_mm, (n, m)."},
       {"test",
        [](const O& o) { return NumberBy(o.rows, [](const R& r) { return r.pTest->dTest; }); },
        "Group test T, (n,)."},
       {"limit",
        [](const O& o) { return NumberBy(o.rows, [](const R& r) { return r.pTest->dLimit; }); },
        "Limit of T, (n,); infinite where the redundancy allows no test."}});
}

using NetworkHandle = std::shared_ptr<PyNetwork>;

PyObservations ImagesOf(const NetworkHandle& p) {
  PyObservations all{p, {}, 2};
  for (std::size_t i = 0; i < p->Input().images.size(); ++i) {
    const ZuNetworkImagePoint& image = p->Input().images[i];
    PyObservation row;
    row.uPhoto = p->Input().photos[At(image.iPhoto)].uId;
    row.uId = p->Input().points[At(image.iPoint)].uId;
    row.pTest = &p->result.imageTests[i];
    const auto v = ZuToPixels(p->made.pixels[i], row.pTest->adV);
    std::copy_n(v.data(), 2, row.adResidual);
    all.rows.push_back(row);
  }
  return all;
}

PyObservations ControlOf(const NetworkHandle& p) {
  PyObservations all{p, {}, 3};
  for (const std::size_t i : p->order) {
    const ZuNetworkPoint& point = p->Input().points[i];
    PyObservation row;
    row.uId = point.uId;
    row.pTest = &p->result.controlTests[i];
    FillNone(row.adResidual, 3);
    int n = 0;
    for (int k = 0; k < 3; ++k) {
      if ((point.iControl >> k & 1) == 0 || !(point.adGivenSd[At(k)] > 0.0)) continue;
      row.adResidual[k] = row.pTest->adV[n];
      row.aiAxis[n++] = k;
    }
    if (n > 0) all.rows.push_back(row);
  }
  return all;
}

PyObservations DistancesOf(const NetworkHandle& p) {
  PyObservations all{p, {}, 1};
  for (std::size_t i = 0; i < p->Input().distances.size(); ++i) {
    const ZuNetworkDistance& distance = p->Input().distances[i];
    PyObservation row;
    row.uId = p->Input().points[At(distance.iFrom)].uId;
    row.uTo = p->Input().points[At(distance.iTo)].uId;
    row.pTest = &p->result.distanceTests[i];
    row.adResidual[0] = row.pTest->adV[0];
    all.rows.push_back(row);
  }
  return all;
}

// --- Network -------------------------------------------------------------------------------------

// Root mean square of the residuals of a photo's used image points [px]; of all where iPhoto is -1.
double RmsOfImages(const PyNetwork& n, int iPhoto) {
  double dSum = 0.0;
  int iCount = 0;
  for (std::size_t i = 0; i < n.result.imageTests.size(); ++i) {
    if (!n.result.imageTests[i].bUsed) continue;
    if (iPhoto >= 0 && n.Input().images[i].iPhoto != iPhoto) continue;
    const auto v = ZuToPixels(n.made.pixels[i], n.result.imageTests[i].adV);
    dSum += v[0] * v[0] + v[1] * v[1];
    ++iCount;
  }
  return iCount > 0 ? std::sqrt(dSum / iCount) : kNoNumber;
}

py::object PhotoRms(const PyNetwork& n) {
  double* pd = nullptr;
  py::object array = NewArray({static_cast<py::ssize_t>(n.result.photos.size())}, &pd);
  for (int i = 0; i < static_cast<int>(n.result.photos.size()); ++i) *pd++ = RmsOfImages(n, i);
  return array;
}

py::list SetAside(const PyNetwork& n) {
  static const char* const kKinds[] = {"image",      "control", "centre",   "distance",
                                       "difference", "plane",   "parameter"};
  py::list all;
  for (const ZuNetworkSetAside& aside : n.result.setAside) {
    py::dict row;
    row["kind"] = kKinds[static_cast<int>(aside.eKind)];
    std::vector<double> error(aside.adError, aside.adError + 3);
    if (aside.eKind == ZuNetworkKind::Image) {
      const ZuNetworkImagePoint& image = n.Input().images[At(aside.iIndex)];
      row["photo"] = n.Input().photos[At(image.iPhoto)].uId;
      row["id"] = n.Input().points[At(image.iPoint)].uId;
      const auto v = ZuToPixels(n.made.pixels[At(aside.iIndex)], aside.adError);
      error.assign(v.begin(), v.end());
    } else if (aside.eKind == ZuNetworkKind::Control) {
      row["id"] = n.Input().points[At(aside.iIndex)].uId;
    } else if (aside.eKind == ZuNetworkKind::Distance) {
      const ZuNetworkDistance& distance = n.Input().distances[At(aside.iIndex)];
      row["id"] = n.Input().points[At(distance.iFrom)].uId;
      row["to"] = n.Input().points[At(distance.iTo)].uId;
      error.resize(1);
    }
    row["test"] = aside.dTest;
    row["limit"] = aside.dLimit;
    row["error"] = NewArrayOf({static_cast<py::ssize_t>(error.size())}, error.data());
    all.append(row);
  }
  return all;
}

py::list CamerasOf(const PyNetwork& n) {
  py::list cameras;
  for (const ZuCamera& c : n.result.cameras) {
    cameras.append(py::cast(c, py::return_value_policy::copy));
  }
  return cameras;
}

std::vector<int> EstimatedIn(const ZuNetworkCamera& camera) {
  std::vector<int> parameters;
  for (int k = 0; k < ZuNetworkParameters; ++k) {
    if (camera.adSd[At(k)] > 0.0) parameters.push_back(k);
  }
  return parameters;
}

py::list CameraSds(const PyNetwork& n) {
  py::list all;
  for (std::size_t i = 0; i < n.result.cameras.size(); ++i) {
    py::dict row;
    for (const int k : EstimatedIn(n.Input().cameras[i])) {
      row[ZuNetworkParameterName(k)] = n.result.cameraSd[i][At(k)];
    }
    all.append(row);
  }
  return all;
}

// k x k; without statistics NaN.
py::object CovarianceOf(const PyNetwork& n, const std::vector<ZuNetworkUnknown>& unknowns) {
  const auto k = static_cast<py::ssize_t>(unknowns.size());
  const std::vector<double> q = n.result.Covariance(unknowns);
  if (!q.empty()) return NewArrayOf({k, k}, q.data());
  double* pd = nullptr;
  py::object array = NewArray({k, k}, &pd);
  FillNone(pd, static_cast<int>(k * k));
  return array;
}

py::list CameraCovariances(const PyNetwork& n) {
  py::list all;
  for (std::size_t i = 0; i < n.result.cameras.size(); ++i) {
    std::vector<ZuNetworkUnknown> unknowns;
    for (const int k : EstimatedIn(n.Input().cameras[i])) {
      unknowns.push_back({ZuNetworkUnknown::Camera, static_cast<int>(i), k});
    }
    all.append(CovarianceOf(n, unknowns));
  }
  return all;
}

int PointIndex(const PyNetwork& n, unsigned uId) {
  for (std::size_t i = 0; i < n.Input().points.size(); ++i) {
    if (n.Input().points[i].uId == uId) return static_cast<int>(i);
  }
  throw py::value_error("point " + std::to_string(uId) + " is not in the network");
}

py::object PointsCovariance(const PyNetwork& n, const py::object& value) {
  std::vector<ZuNetworkUnknown> unknowns;
  for (const unsigned uId : AsIds(value, "ids")) {
    const int i = PointIndex(n, uId);
    for (int k = 0; k < 3; ++k) unknowns.push_back({ZuNetworkUnknown::Point, i, k});
  }
  return CovarianceOf(n, unknowns);
}

std::unique_ptr<PyPoints> PointsOf(const PyNetwork& n) {
  auto points = std::make_unique<PyPoints>();
  for (const std::size_t i : n.order) {
    const auto& p = n.result.points[i];
    const auto& q = n.result.pointCovariance[i];
    auto* const pPoint = new ZuPoint(n.Input().points[i].uId, p[0], p[1], p[2]);
    if (std::isfinite(q[0] + q[1] + q[2])) {
      pPoint->m_dDX = std::sqrt(q[0]);
      pPoint->m_dDY = std::sqrt(q[1]);
      pPoint->m_dDZ = std::sqrt(q[2]);
    }
    pPoint->SetControlFlags(static_cast<short>(n.Input().points[i].iControl));
    points->list.Add(pPoint);
  }
  return points;
}

// The ellipsoids of 95 %: half axes, or the unit vectors of them.
py::object EllipsoidsOf(const PyNetwork& n, bool bAxes) {
  const int iRedundancy = n.result.sigmaKind == ZuSigmaKind::APriori ? 0 : n.result.iRedundancy;
  const std::vector<py::ssize_t> tail =
      bAxes ? std::vector<py::ssize_t>{3} : std::vector<py::ssize_t>{3, 3};
  return NumbersBy(n.order, tail, [&](std::size_t i, double* pd) {
    const ZuErrorEllipsoid e = ZuMakeErrorEllipsoid(n.result.pointCovariance[i], iRedundancy);
    if (bAxes) {
      std::copy_n(e.adAxes.data(), 3, pd);
    } else {
      for (const auto& direction : e.adDirections) pd = std::copy_n(direction.data(), 3, pd);
    }
  });
}

py::object PhotoSds(const PyNetwork& n, std::size_t uFirst) {
  return NumbersBy(n.result.photoSd, {3}, [uFirst](const std::array<double, 6>& sd, double* pd) {
    std::copy_n(sd.data() + uFirst, 3, pd);
  });
}

void FillThree(const std::array<double, 3>& from, double* pd) { std::copy_n(from.data(), 3, pd); }

// "c,xh" or names in a sequence, as bits.
unsigned ToEstimate(const py::object& value) {
  if (value.is_none()) return 0;
  const py::object names = py::isinstance<py::str>(value) ? value.attr("split")(",") : value;
  static const std::vector<const char*> kNames = [] {
    std::vector<const char*> all;
    for (int k = 0; k < ZuNetworkParameters; ++k) all.push_back(ZuNetworkParameterName(k));
    all.push_back(nullptr);
    return all;
  }();
  unsigned uBits = 0;
  for (const py::handle& name : names) {
    uBits |= 1U << FindWord("estimate", name.cast<std::string>(), kNames.data());
  }
  return uBits;
}

ZuNetworkDatum ToDatum(const py::object& value, ZuNetwork* pNetwork) {
  static const char* const kData[] = {"control", "inner", nullptr};
  if (py::isinstance<py::str>(value)) {
    return FindWord("datum", value.cast<std::string>(), kData) == 0 ? ZuNetworkDatum::Control
                                                                    : ZuNetworkDatum::Inner;
  }
  const std::vector<unsigned> ids = AsIds(value, "datum");
  std::size_t uFound = 0;
  for (ZuNetworkPoint& point : pNetwork->points) {
    point.bDatum = std::find(ids.begin(), ids.end(), point.uId) != ids.end();
    uFound += point.bDatum ? 1U : 0U;
  }
  if (uFound < ids.size()) throw py::value_error("datum: a point is not in the network");
  return ZuNetworkDatum::Inner;
}

void AddBars(const py::object& value, ZuNetwork* pNetwork) {
  if (value.is_none()) return;
  const Rows rows = AsRows(value, 4, "scale_bars");
  for (py::ssize_t i = 0; i < rows.n; ++i) {
    const double* const pd = rows.Row(i);
    ZuNetworkDistance distance{-1, -1, pd[2], pd[3]};
    for (int k = 0; k < static_cast<int>(pNetwork->points.size()); ++k) {
      const auto dId = static_cast<double>(pNetwork->points[At(k)].uId);
      if (dId == pd[0]) distance.iFrom = k;
      if (dId == pd[1]) distance.iTo = k;
    }
    if (distance.iFrom < 0 || distance.iTo < 0 || distance.iFrom == distance.iTo ||
        !(pd[2] > 0.0) || !(pd[3] > 0.0)) {
      throw py::value_error("scale_bars: row " + std::to_string(i) +
                            "; ids of two points of the network, their distance and its standard "
                            "deviation would be right");
    }
    pNetwork->distances.push_back(distance);
  }
}

bool LacksOrientation(const ZuProject& project) {
  for (const ZuPhoto* p = project.PhotoList().First(); p != nullptr; p = p->Next()) {
    const ZuPointList* const pMeasured = project.FindMeasurements(p->GetId());
    if (pMeasured == nullptr || pMeasured->IsEmpty()) continue;
    if (!project.Lacks(*p, eZuNeedOrientation).empty()) return true;
  }
  return false;
}

bool GoOn(void* pContext, int iStep, double) {
  return static_cast<Operation*>(pContext)->Notify(
      "adjusting", std::min(static_cast<double>(iStep) / ZuNetworkOptions().iMaxSteps, 1.0));
}

void FinishNetwork(PyNetwork* pNetwork) {
  auto& order = pNetwork->order;
  for (std::size_t i = 0; i < pNetwork->Input().points.size(); ++i) {
    if (i < pNetwork->result.pointUsed.size() && pNetwork->result.pointUsed[i]) order.push_back(i);
  }
  const auto& points = pNetwork->Input().points;
  std::sort(order.begin(), order.end(),
            [&points](std::size_t a, std::size_t b) { return points[a].uId < points[b].uId; });
}

NetworkHandle Adjust(PyProject& project, const py::object& control, const py::object& approx,
                     double dSigma, const std::string& strUnit, const py::object& estimate,
                     bool bCameraPerPhoto, const py::object& datum, const py::object& scaleBars,
                     const std::string& strSigma0, bool bSnoop, double dAlpha, double dAlphaTotal,
                     double dPower, bool bStore, const py::object& progress) {
  const OptionalPoints known(control, "control"), rough(approx, "approx");
  ZuNetworkInput input;
  input.dSigma = ToSigma(dSigma);
  input.bSigmaInPixels = IsPixels(strUnit);
  input.uEstimate = ToEstimate(estimate);
  input.bCameraPerPhoto = bCameraPerPhoto;
  ZuNetworkOptions options;
  options.test = ToTests(strSigma0, bSnoop, dAlpha, dAlphaTotal, dPower);
  const auto pNetwork = std::make_shared<PyNetwork>();
  const Writing writing(project.gate);
  Operation operation(progress);
  {
    const py::gil_scoped_release release;
    if (LacksOrientation(project.project)) {
      ZuOrientationOptions first;
      first.dSigma = input.dSigma;
      first.bSigmaInPixels = input.bSigmaInPixels;
      pNetwork->orientation = ZuOrientProject(&project.project, known.List(), rough.List(), first);
    }
    pNetwork->made = ZuMakeNetwork(project.project, known.List(), rough.List(), input);
  }
  operation.Finish();
  if (pNetwork->Input().photos.empty()) {
    const auto& warnings = pNetwork->made.warnings;
    RaiseAdjustment("no oriented photo with measurements", warnings.empty() ? "" : warnings[0], "",
                    py::none());
  }
  AddBars(scaleBars, &pNetwork->made.network);
  options.eDatum = ToDatum(datum, &pNetwork->made.network);
  options.pfnProgress = &GoOn;
  options.pProgressContext = &operation;
  {
    const py::gil_scoped_release release;
    pNetwork->result = pNetwork->made.network.Adjust(options);
    FinishNetwork(pNetwork.get());
  }
  operation.Finish();
  const ZuNetworkResult& result = pNetwork->result;
  if (result.status != ZuAdjustStatus::Good) {
    RaiseAdjustment(ZuAdjustStatusText(result.status), result.strText, "", py::none());
  }
  if (bStore) {
    const py::gil_scoped_release release;
    ZuStoreNetwork(pNetwork->Input(), result, &project.project);
  }
  TellOrientation(pNetwork->orientation);
  for (const std::string& strText : pNetwork->made.warnings) WarnOfNetwork(strText);
  for (const std::string& strText : result.warnings) WarnOfNetwork(strText);
  return pNetwork;
}

NetworkHandle Calibrate(PyProject& project, const py::object& board, double dSigma,
                        const std::string& strUnit, const py::object& mode,
                        const py::object& estimate, const std::string& strSigma0, bool bSnoop,
                        double dAlpha, double dAlphaTotal, double dPower, bool bStore) {
  static const char* const kCameraModes[] = {"zuvo", "cap", "pinhole", nullptr};
  static const int kModeNumbers[] = {eCameraModeZuvo, eCameraModeCap, eCameraModePinhole};
  const PointsArgument points(board, "board");
  ZuCalibrationOptions options;
  options.dSigma = ToSigma(dSigma);
  options.bSigmaInPixels = IsPixels(strUnit);
  if (!mode.is_none()) {
    options.iMode = kModeNumbers[FindWord("mode", mode.cast<std::string>(), kCameraModes)];
  }
  options.uEstimate = ToEstimate(estimate);
  options.test = ToTests(strSigma0, bSnoop, dAlpha, dAlphaTotal, dPower);
  ZuProjectCalibration found;
  const Writing writing(project.gate);
  {
    const py::gil_scoped_release release;
    found = ZuCalibrateProject(&project.project, points.List(), options);
  }
  if (found.result.status != ZuAdjustStatus::Good) {
    std::string strText = found.result.strText;
    for (const ZuPhotoOrientation& photo : found.orientation.photos) {
      if (photo.IsGood()) continue;
      strText += "; " + UnorientedText(photo);
      break;
    }
    RaiseAdjustment(ZuAdjustStatusText(found.result.status), strText, "", py::none());
  }
  const auto pNetwork = std::make_shared<PyNetwork>();
  pNetwork->made = std::move(found.made);
  pNetwork->result = std::move(found.result);
  pNetwork->orientation = std::move(found.orientation);
  FinishNetwork(pNetwork.get());
  if (bStore) ZuStoreNetwork(pNetwork->Input(), pNetwork->result, &project.project);
  TellOrientation(pNetwork->orientation);
  for (const auto* pTexts : {&found.notes, &pNetwork->made.warnings, &pNetwork->result.warnings}) {
    for (const std::string& strText : *pTexts) WarnOfNetwork(strText);
  }
  return pNetwork;
}

void BindNetwork(py::module_& m) {
  using namespace py::literals;
  using N = PyNetwork;
  py::class_<N, NetworkHandle> network(
      m, "Network",
      "An adjusted network of n photos and m points, those that took part by id. Lengths of the "
      "object have the unit of the project, lengths of the image are mm, angles rad; standard "
      "deviations hold sigma0, are 0 for what is fixed and NaN for what was not estimated.");
  AddColumns<N>(
      network,
      {{"sigma0", [](const N& n) -> py::object { return py::float_(n.result.dSigma0); },
        "A posteriori; 1 without redundancy."},
       {"sigma0_kind", [](const N& n) -> py::object { return ToStr(n.result.sigmaKind); },
        "\"a priori\" or \"a posteriori\": what standard deviations are scaled by."},
       {"observations", [](const N& n) -> py::object { return py::int_(n.result.iObservations); },
        "Their number."},
       {"unknowns", [](const N& n) -> py::object { return py::int_(n.result.iUnknowns); },
        "Their number."},
       {"defect", [](const N& n) -> py::object { return py::int_(n.result.iDefect); },
        "Freedoms of the frame that inner conditions decide."},
       {"redundancy", [](const N& n) -> py::object { return py::int_(n.result.iRedundancy); }, ""},
       {"steps", [](const N& n) -> py::object { return py::int_(n.result.iSteps); }, ""},
       {"rms_pixels", [](const N& n) -> py::object { return py::float_(RmsOfImages(n, -1)); },
        "Of the lengths of the residuals of all used image points."},
       {"warnings",
        [](const N& n) {
          return TextsBy(n.result.warnings,
                         [](const std::string& str) -> const std::string& { return str; });
        },
        "What should be looked at, list of str."},
       {"cameras", [](const N& n) -> py::object { return CamerasOf(n); },
        "Adjusted, a list of Cameras."},
       {"camera_sd", [](const N& n) -> py::object { return CameraSds(n); },
        "Of each camera a dict: standard deviations of what was estimated, by name."},
       {"camera_covariances", [](const N& n) -> py::object { return CameraCovariances(n); },
        "Of each camera (k, k), in the order of camera_sd."},
       {"photo_ids",
        [](const N& n) {
          return IdsBy(n.result.photos, [](const ZuNetworkPhoto& p) { return p.uId; });
        },
        "(n,)."},
       {"photo_names",
        [](const N& n) {
          return TextsBy(n.made.photoNames,
                         [](const std::string& str) -> const std::string& { return str; });
        },
        "n of str."},
       {"photos_used",
        [](const N& n) { return BoolsBy(n.result.photoUsed, [](char c) { return c != 0; }); },
        "(n,)."},
       {"photo_rms_pixels", &PhotoRms, "Of the residuals of each photo, (n,)."},
       {"positions",
        [](const N& n) {
          return NumbersBy(n.result.photos, {3}, [](const ZuNetworkPhoto& p, double* pd) {
            FillThree(p.adPosition, pd);
          });
        },
        "Projection centres, (n, 3)."},
       {"position_sd", [](const N& n) { return PhotoSds(n, 0); }, "(n, 3)."},
       {"rotations",
        [](const N& n) {
          return NumbersBy(n.result.photos, {3, 3}, [](const ZuNetworkPhoto& p, double* pd) {
            std::copy_n(p.adRotation.data(), 9, pd);
          });
        },
        "Image system to object space, (n, 3, 3)."},
       {"rotation_sd", [](const N& n) { return PhotoSds(n, 3); },
        "Of small rotations about the image axes, (n, 3) rad."},
       {"angles", [](const N& n) { return NumbersBy(n.result.photoAngles, {3}, &FillThree); },
        "a, b, c of rotation = Ry(b) Rx(a) Rz(c), (n, 3) rad."},
       {"angles_sd", [](const N& n) { return NumbersBy(n.result.photoAnglesSd, {3}, &FillThree); },
        "(n, 3) rad."},
       {"points", [](const N& n) -> py::object { return py::cast(PointsOf(n)); },
        "The adjusted points by id with their standard deviations, a PointList."},
       {"point_covariances",
        [](const N& n) {
          return NumbersBy(n.order, {3, 3}, [&n](std::size_t i, double* pd) {
            const auto& q = n.result.pointCovariance[i];
            const double ad[9] = {q[0], q[3], q[4], q[3], q[1], q[5], q[4], q[5], q[2]};
            std::copy_n(ad, 9, pd);
          });
        },
        "(m, 3, 3)."},
       {"point_rays",
        [](const N& n) {
          return IntsBy(n.order, [&n](std::size_t i) { return n.result.pointRays[i]; });
        },
        "Used image points of each point, (m,)."},
       {"ellipsoid_axes", [](const N& n) { return EllipsoidsOf(n, true); },
        "Half axes of the ellipsoid that holds the point with 95 %, the longest first, (m, 3)."},
       {"ellipsoid_directions", [](const N& n) { return EllipsoidsOf(n, false); },
        "Unit vectors of these, (m, 3, 3)."},
       {"set_aside", [](const N& n) -> py::object { return SetAside(n); },
        "Observations set aside: dicts of kind, photo, id, to, test, limit and error, which of "
        "image points is in pixels."},
       {"orientation", [](const N& n) -> py::object { return py::cast(n.orientation); },
        "Of the photos that were oriented first, an Orientation; empty where none was."}});
  network
      .def_property_readonly("images", &ImagesOf, "Of the image points, Observations with m = 2.")
      .def_property_readonly("control", &ControlOf,
                             "Of control points with standard deviations, m = 3.")
      .def_property_readonly("scale_bars", &DistancesOf, "Of the known distances, m = 1.")
      .def("covariance", &PointsCovariance, "ids"_a,
           "Of the coordinates of these k points, (3 k, 3 k).")
      .def(
          "distance_sd",
          [](const N& n, unsigned uFrom, unsigned uTo) {
            return n.result.DistanceSd(PointIndex(n, uFrom), PointIndex(n, uTo));
          },
          "a"_a, "b"_a, "Standard deviation of the distance of two points.");
}

}  // namespace

void BindNetworks(py::module_& m) {
  using namespace py::literals;
  BindOrientation(m);
  BindObservations(m);
  BindNetwork(m);

  m.def("orient", &Orient, "project"_a, "control"_a = py::none(), "approx"_a = py::none(),
        py::kw_only(), "sigma"_a = 0.0, "unit"_a = "px", "missing"_a = false, "seed"_a = 1,
        "Orients the photos of a project from what is measured on them, without approximations, "
        "and puts the orientations into it.\n\ncontrol: known points, a PointList or an (n, 3) "
        "array; approx: rough positions for photos that control leaves out. sigma: standard "
        "deviation of a measured coordinate in unit, \"px\" or \"mm\"; 0: estimated photo by "
        "photo. missing keeps the photos that are oriented. Photos that cannot be oriented are "
        "warnings; raises AdjustmentError where none can.");
  m.def("adjust", &Adjust, "project"_a, "control"_a = py::none(), "approx"_a = py::none(),
        py::kw_only(), "sigma"_a = 0.1, "unit"_a = "px", "estimate"_a = py::none(),
        "camera_per_photo"_a = false, "datum"_a = "control", "scale_bars"_a = py::none(),
        "sigma0"_a = "automatic", "snoop"_a = false, "alpha"_a = 0.001, "alpha_total"_a = 0.0,
        "power"_a = 0.8, "store"_a = true, "progress"_a = py::none(),
        "Adjusts photos, cameras and points from all measurements at once.\n\nPhotos that are not "
        "oriented are oriented first. control: points with sd 0 are fixed, others weighted. "
        "estimate: parameters of the cameras, \"c,xh,yh,a1,a2,a3,b1,b2,c1,c2\" or some of them. "
        "datum: \"control\", \"inner\" (conditions over all points), or ids of points. scale_bars: "
        "rows (id, id, distance, sd). snoop sets aside what does not fit. store puts orientations "
        "and cameras into the project. Raises AdjustmentError where the measurements do not decide "
        "it.");
  m.def("calibrate", &Calibrate, "project"_a, "board"_a, py::kw_only(), "sigma"_a = 0.1,
        "unit"_a = "px", "mode"_a = py::none(), "estimate"_a = py::none(), "sigma0"_a = "automatic",
        "snoop"_a = false, "alpha"_a = 0.001, "alpha_total"_a = 0.0, "power"_a = 0.8,
        "store"_a = true,
        "Calibrates cameras from photos of a board whose points are known, a Network.\n\nmode: "
        "\"zuvo\", \"cap\" or \"pinhole\", else as the cameras have it. estimate: as in adjust; "
        "without, as many parameters as the photos decide, and warnings tell which they do not. "
        "All photos are oriented anew.");
}
