// Meshes over a plane against solids with known volume, area and contours.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>
#include <sstream>

#include "zu/mesh/mesh_contours.h"
#include "zu/mesh/mesh_file.h"

namespace {

using Breaklines = std::vector<std::vector<size_t>>;

const std::vector<ZuPoint3d> kPyramid = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0.5, 0.5, 1}};
// The plane that the points, told in its frame, are turned into.
const ZuFrame3d kFrame(ZuPoint3d(3, -2, 5), ZuVector3d(0.6, 0, 0.8), ZuVector3d(0, 1, 0),
                       ZuVector3d(-0.8, 0, 0.6));

ZuPlaneMesh MeshOf(std::vector<ZuPoint3d> points, const Breaklines& breaklines = {},
                   double dMaxEdge = 0.0) {
  const ZuCadPlane plane(kFrame);
  for (ZuPoint3d& p : points) p = plane.ToSpace(ZuPoint2d(p.x, p.y), p.z);
  ZuMeshOptions options;
  options.dMaxEdge = dMaxEdge;
  ZuPlaneMesh mesh;
  EXPECT_EQ(ZuMakePlaneMesh(points, plane, breaklines, options, &mesh), eZuMeshOk);
  return mesh;
}

std::vector<ZuPoint3d> Grid(int n, double (*pfnHeight)(double, double)) {
  std::vector<ZuPoint3d> points;
  for (int i = 0; i <= n; ++i) {
    for (int k = 0; k <= n; ++k) points.emplace_back(i, k, pfnHeight(i, k));
  }
  return points;
}

}  // namespace

TEST(PlaneMesh, HasTheFiguresOfTheSolid) {
  const auto sunk = [](std::vector<ZuPoint3d> points, double d) {
    for (ZuPoint3d& p : points) p.z -= d;
    return points;
  };
  const double dSide = std::sqrt(1.25);
  const struct {
    const char* szName;
    std::vector<ZuPoint3d> points;
    Breaklines lines;
    double dArea, dSurface, dAbove, dBelow;
  } cases[] = {
      {"pyramid", kPyramid, {}, 1.0, 2.0 * dSide, 1.0 / 3.0, 0.0},
      // The top of half the height: 1/8 of the pyramid; the frustum's rest to the unit square.
      {"cut pyramid", sunk(kPyramid, 0.5), {}, 1.0, 2.0 * dSide, 1.0 / 24, 1.0 / 24 + 1.0 / 6},
      // A prism under a slanted roof that passes through the plane.
      {"cut prism",
       {{0, 0, -1}, {4, 0, 3}, {4, 2, 3}, {0, 2, -1}},
       {},
       8,
       8 * std::sqrt(2.0),
       9,
       1},
      // A roof on two slopes, which only its ridge along the breakline makes.
      {"ridge",
       {{0, 0, 0}, {9, 0, 0}, {9, 1, 1}, {0, 1, 1}, {0, 2, 0}, {9, 2, 0}},
       {{2, 3}},
       18,
       18 * std::sqrt(2.0),
       9,
       0},
      // Two breaklines that cross where no point is, at the heights 1 and 3.
      {"crossing",
       {{0, 0, 1}, {2, 0, 3}, {2, 2, 1}, {0, 2, 3}},
       {{0, 2}, {1, 3}},
       4,
       2 * std::sqrt(8.0),
       8,
       0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.szName);
    const ZuPlaneMesh mesh = MeshOf(c.points, c.lines);
    const ZuMeshFigures figures = mesh.Figures();
    EXPECT_NEAR(figures.dArea, c.dArea, 1e-9);
    EXPECT_NEAR(figures.dSurface, c.dSurface, 1e-9);
    EXPECT_NEAR(figures.dVolumeAbove, c.dAbove, 1e-9);
    EXPECT_NEAR(figures.dVolumeBelow, c.dBelow, 1e-9);
    ASSERT_EQ(mesh.Rims().size(), 1U);
    EXPECT_NEAR(mesh.Rims()[0].dArea, c.dArea, 1e-9);
    EXPECT_EQ(mesh.Crossings(), c.lines.size() == 2 ? 1 : 0);
    EXPECT_NEAR(mesh.CrossingGap(), c.lines.size() == 2 ? 2.0 : 0.0, 1e-9);
  }
}

// A cap of a sphere between rings: the mesh is the polyhedron of 64 sectors, the volume of which
// goes to the formula of the cap with the square of the step.
TEST(PlaneMesh, GoesToTheVolumeOfASphereCap) {
  const double dRadius = 5.0, dHeight = 2.0, dRim = std::sqrt(dHeight * (2 * dRadius - dHeight));
  const double dCap = std::numbers::pi * dHeight * dHeight * (3 * dRadius - dHeight) / 3.0;
  double adOff[2];
  for (const int i : {0, 1}) {
    const int n = 32 << i;
    std::vector<ZuPoint3d> points = {{0, 0, dHeight}};
    for (int k = 1; k <= n; ++k) {
      for (int j = 0; j < 4 * n; ++j) {
        const double r = dRim * k / n, a = 2.0 * std::numbers::pi * j / (4 * n);
        points.emplace_back(r * std::cos(a), r * std::sin(a),
                            std::sqrt(dRadius * dRadius - r * r) - dRadius + dHeight);
      }
    }
    const ZuMeshFigures figures = MeshOf(points).Figures();
    adOff[i] = dCap - figures.dVolume();
    EXPECT_NEAR(figures.dArea, 2.0 * n * dRim * dRim * std::sin(std::numbers::pi / (2 * n)), 1e-9);
  }
  EXPECT_NEAR(adOff[0] / adOff[1], 4.0, 0.05);
  EXPECT_LT(adOff[1], 1e-3 * dCap);
}

// No point stands in the circle about a triangle, and the triangles fill the square.
TEST(PlaneMesh, IsDelaunayAndTellsDoublesAndHoles) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> any(0.0, 1.0);
  std::vector<ZuPoint3d> points = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
  for (int i = 0; i < 60; ++i) points.emplace_back(any(random), any(random), any(random));
  points.emplace_back(1, 1, 4);
  const ZuPlaneMesh mesh = MeshOf(points);
  ASSERT_EQ(mesh.Doubles().size(), 1U);
  EXPECT_EQ(mesh.Doubles()[0].iDropped, 64);
  EXPECT_EQ(mesh.Doubles()[0].iKept, 2);
  EXPECT_NEAR(mesh.Doubles()[0].dHeight, 4.0, 1e-9);
  EXPECT_NEAR(mesh.Figures().dArea, 1.0, 1e-9);
  const auto place = [&](int i) { return mesh.Vertices()[static_cast<size_t>(i)].place; };
  for (const ZuPlaneMesh::Triangle& t : mesh.Triangles()) {
    for (int i = 0; i < 64; ++i) {
      const ZuVector2d a = place(t[0]) - place(i), b = place(t[1]) - place(i),
                       c = place(t[2]) - place(i);
      const double dInside = (a * a) * (b.x * c.y - b.y * c.x) - (b * b) * (a.x * c.y - a.y * c.x) +
                             (c * c) * (a.x * b.y - a.y * b.x);
      ASSERT_LT(dInside, 1e-12);
    }
  }
  // An L of breaklines in a grid with one point missing: a hole of 2 x 2 where edges above 1.5 go.
  std::vector<ZuPoint3d> grid = Grid(6, [](double, double) { return 0.0; });
  grid.erase(grid.begin() + 3 * 7 + 3);
  const ZuPlaneMesh holed = MeshOf(grid, {{0, 1, 2, 3, 4, 5, 6}, {0, 7, 14, 21, 27, 34, 41}}, 1.5);
  const std::vector<ZuMeshRim> rims = holed.Rims();
  ASSERT_EQ(rims.size(), 2U);
  EXPECT_EQ(holed.LongTriangles(), 2);
  EXPECT_NEAR(std::min(rims[0].dArea, rims[1].dArea), -2.0, 1e-9);
  EXPECT_NEAR(holed.Figures().dArea, 34.0, 1e-9);
}

// Beside the line stand points whose circles would put the edges across it.
TEST(PlaneMesh, ABreaklinePassesThroughThePointsOnItsWay) {
  for (const double dShift : {0.0, 4.5e6}) {
    std::vector<ZuPoint3d> points;
    for (int k = 0; k < 10; ++k) points.emplace_back(dShift + 0.1 * k, dShift + 0.3 * k, k);
    for (int k = 0; k < 9; ++k) {
      const double x = dShift + 0.1 * k + 0.05, y = dShift + 0.3 * k + 0.15;
      points.emplace_back(x + 0.03, y - 0.01, 0.0);
      points.emplace_back(x - 0.03, y + 0.01, 0.0);
    }
    const ZuPlaneMesh mesh = MeshOf(points, {{9, 0}});
    EXPECT_EQ(mesh.Crossings(), 0);
    for (int k = 0; k < 9; ++k) {
      int iEdges = 0;
      for (const ZuPlaneMesh::Triangle& t : mesh.Triangles()) {
        iEdges += std::count(t.begin(), t.end(), k) + std::count(t.begin(), t.end(), k + 1) == 2;
      }
      EXPECT_EQ(iEdges, 2) << k << " at " << dShift;
    }
  }
}

TEST(PlaneMesh, ContoursRunAtTheirLevels) {
  std::vector<ZuMeshContour> contours;
  const ZuPlaneMesh pyramid = MeshOf(kPyramid);
  ASSERT_EQ(ZuCalcContours(pyramid, 0.25, &contours), eZuMeshOk);
  int iClosed = 0;
  for (const ZuMeshContour& c : contours) {
    if (!c.bClosed) continue;
    ++iClosed;
    EXPECT_NEAR(c.Length(), 4.0 * (1.0 - c.dLevel), 1e-9);
  }
  EXPECT_EQ(iClosed, 3);
  // A terrace at the level 1 between slopes: one line, at its lower rim.
  const ZuPlaneMesh terrace = [] {
    ZuPlaneMesh mesh;
    const auto grid = Grid(6, [](double x, double) { return x < 2 ? x / 2 : x < 4 ? 1.0 : x - 3; });
    EXPECT_EQ(ZuMakePlaneMesh(grid, ZuCadPlane::XY(0.0), {}, {}, &mesh), eZuMeshOk);
    return mesh;
  }();
  ASSERT_EQ(ZuCalcContours(terrace, 1.0, &contours), eZuMeshOk);
  ASSERT_EQ(contours.size(), 3U);
  for (size_t k = 0; k < 3; ++k) {
    EXPECT_FALSE(contours[k].bClosed);
    EXPECT_NEAR(contours[k].Length(), 6.0, 1e-9);
    for (const ZuPoint2d& p : contours[k].line) EXPECT_NEAR(p.x, k == 0 ? 2.0 : k + 4.0, 1e-9);
  }
  EXPECT_EQ(ZuCalcContours(terrace, 0.0, &contours), eZuMeshBadOption);
  EXPECT_EQ(ZuCalcContours(terrace, 1e-300, &contours), eZuMeshTooMany);
}

TEST(PlaneMesh, RefusesWhatMakesNoMeshAndWritesWhatDoes) {
  const double dInf = HUGE_VAL;
  ZuPlaneMesh mesh = MeshOf(kPyramid);
  const auto status = [&mesh](const std::vector<ZuPoint3d>& points, const Breaklines& lines = {}) {
    return ZuMakePlaneMesh(points, ZuCadPlane(kFrame), lines, {}, &mesh);
  };
  EXPECT_EQ(status({}), eZuMeshTooFew);
  EXPECT_EQ(status({{1, 2, 3}, {1, 2, 3}, {4, 5, 6}}), eZuMeshTooFew);
  EXPECT_EQ(status({{0, 0, 0}, {1, 1, 1}, {3, 3, 3}, {7, 7, 7}}), eZuMeshCollinear);
  EXPECT_EQ(status({{0, 0, 0}, {1, 0, dInf}, {0, 1, 0}}), eZuMeshNotFinite);
  EXPECT_EQ(status({{0, 0, 0}, {1, 0, NAN}, {0, 1, 0}}), eZuMeshNotFinite);
  EXPECT_EQ(status(kPyramid, {{0, 5}}), eZuMeshBadBreakline);
  EXPECT_EQ(status(kPyramid, {{0}}), eZuMeshBadBreakline);
  EXPECT_EQ(mesh.Triangles().size(), 4U);

  ASSERT_EQ(ZuMakePlaneMesh({{0, 0, 0.1}, {1, 0, 0}, {0, 1, 0}}, ZuCadPlane(), {}, {}, &mesh),
            eZuMeshOk);
  std::ostringstream ply, binary, obj;
  EXPECT_TRUE(ZuExportMeshPly(ply, mesh, false) && ZuExportMeshPly(binary, mesh, true) &&
              ZuExportMeshObj(obj, mesh));
  EXPECT_EQ(obj.str(), "v 0 0 0.1\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
  const std::string strEnd = "end_header\n";
  EXPECT_EQ(ply.str().substr(ply.str().find(strEnd)), strEnd + "0 0 0.1\n1 0 0\n0 1 0\n3 0 1 2\n");
  EXPECT_EQ(binary.str().size() - binary.str().find(strEnd) - strEnd.size(), 3U * 24 + 13);
}
