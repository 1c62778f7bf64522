// Two measured lines joined to a corner, beside the textbook's formula: four bytes choose space,
// limit angle and extensions, words of 16 bits are the coordinates.
#include "zu/cad/lines_match.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace {

void Require(bool bGood) {
  if (!bGood) std::abort();
}

struct Vec {
  double x = 0.0, y = 0.0, z = 0.0;

  Vec operator+(Vec o) const { return {x + o.x, y + o.y, z + o.z}; }
  Vec operator-(Vec o) const { return {x - o.x, y - o.y, z - o.z}; }
  Vec operator*(double d) const { return {x * d, y * d, z * d}; }
  double Dot(Vec o) const { return x * o.x + y * o.y + z * o.z; }
  Vec Cross(Vec o) const { return {y * o.z - z * o.y, z * o.x - x * o.z, x * o.y - y * o.x}; }
  double Length() const { return std::hypot(x, y, z); }
};

constexpr double kTolerance = 1e-6;  // of results, whose coordinates reach 32768
constexpr double kUndecided = 1e-9;  // of sines; what is this close is left to rounding

struct Case {
  Vec aLine[2][2];
  double adExtend[2];
  double dAngle;
  int iMode;
  ZuCad2LinesMatch Match() const {
    const auto point = [](Vec v) { return ZuPoint3d(v.x, v.y, v.z); };
    return ZuCad2LinesMatch(point(aLine[0][0]), point(aLine[0][1]), point(aLine[1][0]),
                            point(aLine[1][1]), adExtend[0], adExtend[1], dAngle,
                            static_cast<eMatchMode>(iMode));
  }
};

Case TakeCase(const std::uint8_t* pData, std::size_t uSize) {
  const auto byte = [&](std::size_t i) { return i < uSize ? static_cast<int>(pData[i]) : 0; };
  Case c;
  c.iMode = byte(0) % 5;
  c.dAngle = byte(1) * 0.125;
  std::size_t i = 4;
  for (auto& line : c.aLine) {
    c.adExtend[&line - c.aLine] = byte(2 + static_cast<std::size_t>(&line - c.aLine)) - 128;
    for (Vec& v : line) {
      for (double* pd : {&v.x, &v.y, &v.z}) {
        *pd = static_cast<std::int16_t>(byte(i) | byte(i + 1) << 8);
        i += 2;
      }
    }
  }
  return c;
}

double* LeftOut(Vec& v, int iMode) {
  return iMode == eMatchModeXY ? &v.z : iMode == eMatchModeXZ ? &v.y : &v.x;
}

bool IsFlat(int iMode) { return iMode >= eMatchModeXY && iMode <= eMatchModeYZ; }

// The meeting point of one line: the foot of the common perpendicular.
struct Corner {
  Vec keep, match;
  bool bDecided;
};

// Which end of the line stays, the farther one of a point; open where the point is in the middle.
Corner Keep(const Vec (&line)[2], Vec match) {
  const double dFar = (match - line[1]).Length() - (match - line[0]).Length();
  return {line[dFar <= 0.0 ? 0 : 1], match, std::fabs(dFar) > kTolerance};
}

Corner Skew(const Vec (&line)[2], const Vec (&other)[2], double dExtend) {
  const Vec d = line[1] - line[0], e = other[1] - other[0];
  const Vec n = d.Cross(e);  // exact: the coordinates are short whole numbers
  const double t = (other[0] - line[0]).Cross(e).Dot(n) / n.Dot(n);
  Corner corner = Keep(line, line[0] + d * t);
  const double dSign = (corner.keep - line[0]).Length() == 0.0 ? 1.0 : -1.0;
  corner.match = corner.match + d * (dSign * dExtend / d.Length());
  return corner;
}

Corner Parallel(const Vec (&line)[2], Vec middle) {
  const Vec d = line[1] - line[0];
  return Keep(line, line[0] + d * (d.Dot(middle - line[0]) / d.Dot(d)));
}

Vec Middle(const Vec (&a)[2], const Vec (&b)[2]) {
  Vec middle;
  double dShortest = HUGE_VAL;
  for (const Vec& p : a) {
    for (const Vec& q : b) {
      const double d = (p - q).Dot(p - q);
      if (d < dShortest) middle = (p + q) * 0.5;
      dShortest = std::fmin(d, dShortest);
    }
  }
  return middle;
}

void RequireNear(Vec expected, const ZuPoint3d& p) {
  const double dTolerance = kTolerance * std::fmax(1.0, expected.Length());
  Require((expected - Vec{p.x, p.y, p.z}).Length() <= dTolerance);
}

void Check(Case c) {
  const ZuCad2LinesMatch match = c.Match();
  const double dHeight[2] = {*LeftOut(c.aLine[0][0], c.iMode), *LeftOut(c.aLine[1][0], c.iMode)};
  for (auto& line : c.aLine) {
    for (Vec& v : line) {
      if (IsFlat(c.iMode)) *LeftOut(v, c.iMode) = 0.0;
    }
  }
  const auto& [a, b] = c.aLine;
  const Vec d = a[1] - a[0], e = b[1] - b[0];
  if (d.Length() == 0.0 || e.Length() == 0.0) {
    Require(!match.IsValid());
    return;
  }
  const Vec cross = d.Cross(e);
  const double dSine = cross.Length() / d.Length() / e.Length();
  const double dLimit = std::sin(c.dAngle * std::acos(-1.0) / 180.0);
  if (std::fabs(dSine - dLimit) < kUndecided && dSine != 0.0) return;
  Require(match.IsValid() && match.IsParallel() == (dSine <= dLimit));
  if (!match.IsParallel() && dSine < 1e-3) return;  // too oblique for the tolerance

  const Vec middle = Middle(a, b);
  Corner corners[2] = {match.IsParallel() ? Parallel(a, middle) : Skew(a, b, c.adExtend[0]),
                       match.IsParallel() ? Parallel(b, middle) : Skew(b, a, c.adExtend[1])};
  for (int i = 0; i < 2; ++i) {
    if (!corners[i].bDecided) return;
    if (!IsFlat(c.iMode)) continue;
    *LeftOut(corners[i].keep, c.iMode) = dHeight[i];
    *LeftOut(corners[i].match, c.iMode) = 0.5 * (dHeight[0] + dHeight[1]);
  }
  RequireNear(corners[0].keep, match.Keep1());
  RequireNear(corners[0].match, match.Match1());
  RequireNear(corners[1].keep, match.Keep2());
  RequireNear(corners[1].match, match.Match2());
  const int iRating = match.ValueDistance();
  Require(iRating >= 0 && iRating <= 2);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
  Check(TakeCase(pData, uSize));
  return 0;
}
