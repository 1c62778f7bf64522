// Constructions in the plane, and polygons.
#include <cmath>

#include "columns.h"
#include "types.h"
#include "zu/cad/arc.h"
#include "zu/cad/balanced_line.h"
#include "zu/cad/rectangle.h"
#include "zu/cad/sight_intersection.h"

namespace {

std::vector<ZuPoint2d> ToPlaces(const py::object& value, const char* szArgument) {
  const Rows rows = AsRows(value, 2, szArgument);
  std::vector<ZuPoint2d> places;
  for (py::ssize_t i = 0; i < rows.n; ++i) places.emplace_back(rows.Row(i)[0], rows.Row(i)[1]);
  return places;
}

ZuPoint2d ToPlace2d(const py::object& value, const char* szArgument) {
  const Rows rows = AsRows(value, 2, szArgument);
  if (!rows.bSingle) throw py::value_error(std::string(szArgument) + ": two numbers");
  return ZuPoint2d(rows.pd[0], rows.pd[1]);
}

py::object FromPlace(const ZuPoint2d& p) {
  const double ad[] = {p.x, p.y};
  return NewArrayOf({2}, ad);
}

py::object FromPlaces(const std::vector<ZuPoint2d>& places) {
  return NumbersBy(places, {2}, [](const ZuPoint2d& p, double* pd) { pd[0] = p.x, pd[1] = p.y; });
}

py::object FromNumbers(const std::vector<double>& numbers) {
  return NewArrayOf({static_cast<py::ssize_t>(numbers.size())}, numbers.data());
}

template <class T>
T Checked(T result) {
  if (!result.fit.IsOk()) {
    RaiseAdjustment(ZuCadStatusText(result.fit.eStatus), "", "", py::none());
  }
  return result;
}

// What all constructions from more than the least number of measurements tell.
template <class T>
void AddFit(py::class_<T>& to) {
  AddColumns<T>(
      to, {{"redundancy", [](const T& t) -> py::object { return py::int_(t.fit.iRedundancy); }, ""},
           {"sigma0", [](const T& t) -> py::object { return py::float_(t.fit.dSigma0); },
            "Standard deviation of a coordinate, or a factor to the standard deviations told; 0 "
            "without redundancy."},
           {"rms", [](const T& t) -> py::object { return py::float_(t.fit.dRms); },
            "Of the residuals."}});
}

// --- Arc, rectangle, line ------------------------------------------------------------------------

void BindArc(py::module_& m) {
  using namespace py::literals;
  using A = ZuCadArc;
  py::class_<A> arc(m, "Arc",
                    "An arc of the plane, from its start by the sweep, positive to the left.");
  AddFit(arc);
  AddColumns<A>(arc,
                {{"centre", [](const A& a) { return FromPlace(a.ptCentre); }, "(2,)."},
                 {"radius", [](const A& a) -> py::object { return py::float_(a.dRadius); }, ""},
                 {"start", [](const A& a) -> py::object { return py::float_(a.dStart); },
                  "Direction of the start from the centre, from the x axis [rad]."},
                 {"sweep", [](const A& a) -> py::object { return py::float_(a.dSweep); }, "[rad]."},
                 {"length", [](const A& a) -> py::object { return py::float_(a.Length()); }, ""},
                 {"rise", [](const A& a) -> py::object { return py::float_(a.Rise()); },
                  "Of the middle over the chord."},
                 {"covariance",
                  [](const A& a) {
                    return NewArrayOf({3, 3}, a.adCov);
                  },
                  "Of centre and radius, (3, 3)."},
                 {"distances", [](const A& a) { return FromNumbers(a.distances); },
                  "Of the points from the circle, positive outside, (n,)."}});
  arc.def(
      "evaluate",
      [](const A& a, const py::object& part) {
        const Rows rows = AsRows(part, 0, "part");
        std::vector<ZuPoint2d> places;
        for (py::ssize_t i = 0; i < rows.n; ++i) places.push_back(a.Evaluate(rows.pd[i]));
        return FromPlaces(places);
      },
      "part"_a, "Places (n, 2) at parts (n,) of the arc: 0 its start, 1 its end.");
  m.def(
      "fit_arc",
      [](const py::object& points, double dSigma) {
        return Checked(ZuCadArc::BestFit(ToPlaces(points, "points"), dSigma));
      },
      "points"_a, py::kw_only(), "sigma"_a = 0.0,
      "The best-fitting Arc through three or more points (n, 2) of the plane. sigma: of a "
      "coordinate, 0: the residuals tell it.");
  m.def(
      "arc_by_radius",
      [](const py::object& a, const py::object& b, double dRadius, bool bLeft, bool bLong) {
        return Checked(
            ZuCadArc::ByRadius(ToPlace2d(a, "a"), ToPlace2d(b, "b"), dRadius, bLeft, bLong));
      },
      "a"_a, "b"_a, "radius"_a, py::kw_only(), "left"_a = true, "long"_a = false,
      "The Arc from a to b of a radius; left: the centre to the left of a to b; long: the longer "
      "of "
      "the two arcs.");
}

void BindRectangle(py::module_& m) {
  using namespace py::literals;
  using R = ZuCadRectangle;
  py::class_<R> rectangle(m, "Rectangle", "A rectangle of the plane.");
  AddFit(rectangle);
  AddColumns<R>(
      rectangle,
      {{"corners", [](const R& r) { return FromPlaces(r.corners); }, "(4, 2)."},
       {"centre", [](const R& r) { return FromPlace(r.ptCentre); }, "(2,)."},
       {"direction", [](const R& r) -> py::object { return py::float_(r.dDirection); },
        "Of the side from corner 1 to 2, from the x axis [rad]."},
       {"width", [](const R& r) -> py::object { return py::float_(r.dWidth); }, "Of that side."},
       {"height", [](const R& r) -> py::object { return py::float_(r.dHeight); },
        "Of the one from corner 2 to 3."},
       {"sd",
        [](const R& r) {
          const double ad[] = {r.dDirectionSd, r.dWidthSd, r.dHeightSd};
          return NewArrayOf({3}, ad);
        },
        "Of direction, width and height, (3,); 0 where nothing tells them."},
       {"residuals", [](const R& r) { return FromNumbers(r.residuals); },
        "Of corners x, y in turn, rectangle less given; of an outline the distance of each point "
        "from its side."}});
  m.def(
      "fit_rectangle",
      [](const py::object& points, double dSigma) {
        const std::vector<ZuPoint2d> places = ToPlaces(points, "points");
        return Checked(places.size() <= 4 ? ZuCadRectangle::ByCorners(places, dSigma)
                                          : ZuCadRectangle::ByOutline(places, dSigma));
      },
      "points"_a, py::kw_only(), "sigma"_a = 0.0,
      "The best Rectangle through three or four corners in their order, or five and more points on "
      "its sides, (n, 2).");
}

void BindBalancedLine(py::module_& m) {
  using namespace py::literals;
  using L = ZuCadBalancedLine;
  py::class_<L> line(m, "BalancedLine", "A best line through points in a row, whole or by parts.");
  AddFit(line);
  AddColumns<L>(
      line, {{"corners", [](const L& l) { return FromPlaces(l.corners); },
              "Start, breaks and end, (k + 1, 2)."},
             {"directions",
              [](const L& l) {
                return NumberBy(l.parts, [](const ZuCadLinePart& p) { return p.dDirection; });
              },
              "Of the k parts, from the x axis, (k,) rad."},
             {"directions_sd",
              [](const L& l) {
                return NumberBy(l.parts, [](const ZuCadLinePart& p) { return p.dDirectionSd; });
              },
              "(k,) rad; 0 where nothing tells them."},
             {"straightness",
              [](const L& l) {
                return NumberBy(l.parts, [](const ZuCadLinePart& p) { return p.dStraightness; });
              },
              "From the lowest to the highest distance of each part, (k,)."},
             {"distances", [](const L& l) { return FromNumbers(l.distances); },
              "Of each point from the line of its part, positive to its left, (n,)."}});
  m.def(
      "balanced_line",
      [](const py::object& points, double dTolerance, const std::vector<std::size_t>& breaks,
         double dSigma) {
        const std::vector<ZuPoint2d> places = ToPlaces(points, "points");
        ZuCadLineOptions options;
        options.dTolerance = dTolerance;
        options.breaks = breaks;
        options.dSigma = dSigma;
        ZuCadBalancedLine fitted;
        {
          const py::gil_scoped_release release;
          fitted = ZuCadBalancedLine::BestFit(places, options);
        }
        return Checked(std::move(fitted));
      },
      "points"_a, py::kw_only(), "tolerance"_a = 0.0, "breaks"_a = std::vector<std::size_t>(),
      "sigma"_a = 0.0,
      "The best BalancedLine through points (n, 2) in a row.\n\ntolerance: it breaks where points "
      "would lie farther off, in the fewest parts, 0: it does not break; breaks: instead, the "
      "first "
      "points of the second part and of those behind.");
}

// --- Positions -----------------------------------------------------------------------------------

std::vector<ZuCadSight> ToSights(const py::object& known, const py::object& values,
                                 const py::object& sigma, ZuCadSight::eKind eKind) {
  std::vector<ZuCadSight> sights;
  if (known.is_none()) return sights;
  const std::vector<ZuPoint2d> places = ToPlaces(known, "stations");
  const Rows numbers = AsRows(values, 0, "measurements");
  if (numbers.n != static_cast<py::ssize_t>(places.size())) {
    throw py::value_error("measurements: one for each station would be right");
  }
  const double dSigma = sigma.cast<double>();
  for (std::size_t i = 0; i < places.size(); ++i) {
    sights.push_back({places[i], eKind, numbers.pd[i], dSigma});
  }
  return sights;
}

void BindPositions(py::module_& m) {
  using namespace py::literals;
  using P = ZuCadPosition;
  py::class_<P> position(m, "Position", "A point of the plane from measurements to known ones.");
  AddFit(position);
  AddColumns<P>(
      position,
      {{"xy", [](const P& p) { return FromPlace(p.pt); }, "(2,)."},
       {"other",
        [](const P& p) { return p.bOther ? FromPlace(p.ptOther) : py::object(py::none()); },
        "The second solution of two measurements, (2,), or None."},
       {"zero", [](const P& p) -> py::object { return py::float_(p.dZero); },
        "Of a resection: the direction of the zero of the circle [rad]."},
       {"covariance",
        [](const P& p) {
          return NewArrayOf({3, 3}, p.adCov);
        },
        "Of x, y and, of a resection, the zero, (3, 3)."},
       {"residuals", [](const P& p) { return FromNumbers(p.residuals); },
        "Adjusted less measured, directions first."},
       {"geometry", [](const P& p) -> py::object { return py::float_(p.dGeometry); },
        "Of an intersection the angle at which its lines meet [rad]; of a resection the gap from "
        "the dangerous circle in its radii."}});
  m.def(
      "intersect_sights",
      [](const py::object& from, const py::object& directions, const py::object& distancesFrom,
         const py::object& distances, double dDirectionSigma, double dDistanceSigma, bool bLeft) {
        std::vector<ZuCadSight> sights =
            ToSights(from, directions, py::float_(dDirectionSigma), ZuCadSight::eDirection);
        const std::vector<ZuCadSight> more =
            ToSights(distancesFrom, distances, py::float_(dDistanceSigma), ZuCadSight::eDistance);
        sights.insert(sights.end(), more.begin(), more.end());
        return Checked(ZuCadIntersect(sights, bLeft));
      },
      "directions_from"_a = py::none(), "directions"_a = py::none(),
      "distances_from"_a = py::none(), "distances"_a = py::none(), py::kw_only(),
      "direction_sigma"_a = 0.0, "distance_sigma"_a = 0.0, "left"_a = true,
      "The Position from directions (n,) and distances (k,) measured from stations (n, 2), (k, "
      "2).\n\nDirections count from the x axis, positive to the left [rad]. left: of two solutions "
      "the one to the left of the line from the first station to the second.");
  m.def(
      "resect_directions",
      [](const py::object& to, const py::object& directions, double dSigma) {
        return Checked(
            ZuCadResect(ToSights(to, directions, py::float_(dSigma), ZuCadSight::eDirection)));
      },
      "known"_a, "directions"_a, py::kw_only(), "sigma"_a = 0.0,
      "The Position from which directions (n,) to three or more known points (n, 2) were "
      "measured.");
}

}  // namespace

void BindConstructions(py::module_& m) {
  BindArc(m);
  BindRectangle(m);
  BindBalancedLine(m);
  BindPositions(m);
}
