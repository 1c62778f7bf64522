// Positions on the earth, against worked examples that were published (EPSG Guidance Note 7-2,
// 2021) and against the definition of the grid: the meridian arc of the complex latitude whose
// isometric latitude is psi + i lambda, integrated with 40 digits.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "zu/geo/position_converter.h"

namespace {

constexpr double kDegreeOfTest = 0.017453292519943295;

ZuEllipsoid EllipsoidOf(const char* szName) {
  ZuEllipsoid ellipsoid;
  EXPECT_TRUE(ZuParseEllipsoid(szName, &ellipsoid)) << szName;
  return ellipsoid;
}

ZuPositionSystem SystemOf(const std::string& strText) {
  ZuPositionSystem system;
  EXPECT_TRUE(ZuParsePositionSystem(strText, &system)) << strText;
  return system;
}

// Names of systems, of which the result is in metres or degrees.
struct PositionCase {
  const char *szEllipsoid, *szFrom, *szTo;
  double in[3], out[3];
  double dTolerance;
  double dConvergence = 0.0, dScale = 1.0;  // [degrees], [-]
};

TEST(Position, IsWhatWasPublishedAndWhatTheDefinitionGives) {
  const double dLat = 53.0 + 48.0 / 60 + 33.820 / 3600, dLon = 2.0 + 7.0 / 60 + 46.380 / 3600;
  const PositionCase cases[] = {
      // EPSG 7-2, 4.1.1, to its last digit and to the digits of the formula; 4.1.2; 3.5.3.1.
      {"wgs84",
       "geographic",
       "geocentric",
       {dLat, dLon, 73.0},
       {3771793.968, 140253.342, 5124304.349},
       5e-4},
      {"wgs84",
       "geographic",
       "geocentric",
       {dLat, dLon, 73.0},
       {3771793.96764178246, 140253.341899613087, 5124304.34935053611},
       2e-9},
      {"wgs84",
       "geographic",
       "local:55,5,200",
       {dLat, dLon, 73.0},
       {-189013.869, -128642.040, -4220.171},
       5e-4},
      {"wgs84",
       "geocentric",
       "local:55,5,200",
       {3771793.96764178246, 140253.341899613087, 5124304.34935053611},
       {-189013.869150912706, -128642.03980555688, -4220.17075840203},
       4e-9},
      {"6377563.396,299.32496",
       "geographic",
       "tm:-2,0.9996012717,400000,-100000,49",
       {50.5, 0.5, 1.0},
       {577274.99, 69740.50, 1.0},
       1e-2,
       1.92956085587,
       0.9999872867005},
      // By the definition.
      {"wgs84",
       "geographic",
       "utm:32",
       {48.137, 11.575, 519.0},
       {691567.32638414653, 5334734.3304817597, 519.0},
       1e-8,
       1.91829262790146,
       1.00005093620719},
      {"wgs84",
       "geographic",
       "utm:56s",
       {-33.8568, 151.2153, -7.0},
       {334900.56965226191, 6252288.7528882924, -7.0},
       1e-8,
       0.994515432161335,
       0.99993603247062},
      {"wgs84",
       "geographic",
       "tm:3,0.9996,500000",
       {10.0, 11.0, 0.0},
       {1379471.0150745355, 1116126.2925356682, 0.0},
       1e-8,
       1.39818217540146,
       1.00918624653505},
      {"bessel1841",
       "geographic",
       "gk:3",
       {51.0, 9.5, 200.0},
       {3535094.4624287188, 5651624.5689239116, 200.0},
       1e-8,
       0.388576918498281,
       1.00001512032910},
      {"krassowski1940",
       "geographic",
       "tm:-72,1,500000,1000",
       {-45.25, -69.5, 0.0},
       {696260.82157439524, -5014858.1232913068, 0.0},
       1e-8,
       -1.77602760608269,
       1.00047341956787},
      {"bessel1841",
       "geographic:gon",
       "geocentric",
       {-89.5 / 0.9, 179.0 / 0.9, -10000.0},
       {-55743.4696415334683, 973.00588191709256, -6345835.69748485375},
       2e-9}};
  for (const PositionCase& c : cases) {
    SCOPED_TRACE(std::string(c.szFrom) + " to " + c.szTo);
    const ZuPositionConverter there(EllipsoidOf(c.szEllipsoid), SystemOf(c.szFrom),
                                    SystemOf(c.szTo));
    double x = c.in[0], y = c.in[1], z = c.in[2];
    ZuGridFigures grid;
    ASSERT_EQ(there.Convert(&x, &y, &z, &grid), eZuPositionOk);
    EXPECT_NEAR(x, c.out[0], c.dTolerance);
    EXPECT_NEAR(y, c.out[1], c.dTolerance);
    EXPECT_NEAR(z, c.out[2], c.dTolerance);
    EXPECT_NEAR(grid.m_dConvergence, c.dConvergence * kDegreeOfTest, 1e-13);
    EXPECT_NEAR(grid.m_dScale, c.dScale, 1e-13);
  }
}

// Every pair of systems there and back, over the earth, from its inside to satellites.
TEST(Position, ComesBackWithinATenthOfAMicrometre) {
  const char* const systems[] = {
      "geographic", "geographic:gon", "geographic:rad",     "geocentric",      "utm:33",
      "utm:33s",    "gk:5",           "tm:20,0.99,7,8,-40", "local:-70,14,300"};
  std::mt19937 random(20);
  std::uniform_real_distribution<double> unit(-1.0, 1.0);
  const ZuEllipsoid ellipsoid = EllipsoidOf("clarke1866");
  const ZuPositionSystem space = ZuPositionSystem::Geocentric();
  int iConverted = 0;
  double dWorst = 0.0;
  for (int i = 0; i < 300; ++i) {
    double lat = 80.0 * unit(random), lon = 15.0 + 3.5 * unit(random);
    double h = i % 3 == 0 ? 1e4 * unit(random) : i % 3 == 1 ? 1e6 * unit(random) : 2e7;
    const double dLat = lat, dLon = lon;
    ASSERT_EQ(ZuPositionConverter(ellipsoid, SystemOf("geographic"), space).Convert(&lat, &lon, &h),
              eZuPositionOk);
    for (const char* szSystem : systems) {
      const ZuPositionConverter to(ellipsoid, space, SystemOf(szSystem));
      const ZuPositionConverter from(ellipsoid, SystemOf(szSystem), space);
      double x = lat, y = lon, z = h;
      const bool bGood = to.Convert(&x, &y, &z) == eZuPositionOk;
      // A zone alone ends near its meridian.
      ASSERT_TRUE(bGood || std::string(szSystem).rfind("utm", 0) == 0) << szSystem << ' ' << dLat;
      if (!bGood) continue;
      ASSERT_EQ(from.Convert(&x, &y, &z), eZuPositionOk) << szSystem << ' ' << dLat << ' ' << dLon;
      dWorst = std::max(dWorst, std::hypot(x - lat, y - lon, z - h));
      ++iConverted;
    }
  }
  EXPECT_LT(dWorst, 1e-7);
  EXPECT_GE(iConverted, 2600);
}

TEST(Position, IsRefusedWhereASystemDoesNotReach) {
  const double dNaN = std::numeric_limits<double>::quiet_NaN();
  const struct {
    const char *szFrom, *szTo;
    double x, y, z;
    eZuPositionStatus eStatus;
  } cases[] = {{"geographic", "geocentric", 90.1, 0.0, 0.0, eZuPositionOutside},
               {"geographic", "geocentric", 50.0, 361.0, 0.0, eZuPositionOutside},
               {"geographic", "geocentric", 50.0, dNaN, 0.0, eZuPositionNotFinite},
               {"geographic", "geocentric", 50.0, 8.0, 1e300, eZuPositionOutside},
               {"geocentric", "geographic", 0.0, 0.0, 0.0, eZuPositionNearCentre},
               {"geocentric", "local:0,0,0", 1e300, 1e300, 0.0, eZuPositionOutside},
               {"geographic", "utm:32", 85.0, 9.0, 0.0, eZuPositionOutsideTarget},
               {"geographic", "utm:32", 0.0, 20.0, 0.0, eZuPositionOutsideTarget},
               {"geographic", "gk:3", 50.0, 40.0, 0.0, eZuPositionOutsideTarget},
               {"geographic", "gk:3", 50.0, -171.0, 0.0, eZuPositionOutsideTarget},
               {"utm:32", "geographic", -1.0, 5e6, 0.0, eZuPositionOutside},
               {"utm:32", "geographic", 500000.0, 1.5e7, 0.0, eZuPositionOutside},
               {"tm:9", "geographic", 1e9, 1e9, 0.0, eZuPositionOutside},
               {"utm", "geographic", 5e5, 5e6, 0.0, eZuPositionBadSystem}};
  for (const auto& c : cases) {
    const ZuPositionConverter converter(EllipsoidOf("WGS 84"), SystemOf(c.szFrom),
                                        SystemOf(c.szTo));
    double x = c.x, y = c.y, z = c.z;
    EXPECT_EQ(converter.Convert(&x, &y, &z), c.eStatus) << c.szFrom << ' ' << c.x << ' ' << c.y;
    EXPECT_TRUE((x == c.x || std::isnan(c.x)) && z == c.z) << c.szFrom;
  }
  ZuPositionSystem system;
  for (const char* szText :
       {"", "utm:", "utm:0", "utm:61", "utm:32x", "gk:-1", "gk:120", "geographic:mil",
        "tm:", "tm:1,2,3,4,5,6", "tm:0,9", "tm:nan", "local:1,2", "local:91,0,0", "geocentric:1"}) {
    EXPECT_FALSE(ZuParsePositionSystem(szText, &system)) << szText;
  }
  ZuEllipsoid ellipsoid;
  for (const char* szText : {"", "earth", "1,298", "6378137,", "6378137,2", "6378137,nan"}) {
    EXPECT_FALSE(ZuParseEllipsoid(szText, &ellipsoid)) << szText;
  }
}

// Zones and their exceptions (NGA, The Universal Grids, 2014); texts are read as they are written.
TEST(Position, FindsTheZone) {
  const struct {
    double lat, lon;
    int iZone;
  } zones[] = {{0, -180, 1},   {0, 180, 1},    {0, 179.999, 60}, {48, 6, 32},    {48, 5.99, 31},
               {60, 2.99, 31}, {60, 3, 32},    {60, 5, 32},      {64, 5, 31},    {73, 8.9, 31},
               {73, 9, 33},    {73, 20.9, 33}, {73, 21, 35},     {73, 33, 37},   {73, 41.9, 37},
               {73, 42, 38},   {84, 9, 0},     {-80.1, 9, 0},    {-80, 369, 32}, {73, -1, 30}};
  for (const auto& zone : zones) {
    EXPECT_EQ(ZuUtmZone(zone.lat, zone.lon), zone.iZone) << zone.lat << ' ' << zone.lon;
  }
  ZuPositionSystem utm;
  EXPECT_EQ(ZuFindUtmZone(EllipsoidOf("grs80"), SystemOf("geographic"), -33.9, 151.2, 5.0, &utm),
            eZuPositionOk);
  EXPECT_EQ(ZuPositionSystemText(utm), "utm:56s");
  for (const char* szText : {"utm:32n", "utm", "geographic:gon", "geocentric",
                             "local:48.5,-11.25,519.125", "tm:9,0.5,1,-2,49.5"}) {
    EXPECT_EQ(ZuPositionSystemText(SystemOf(szText)), szText);
  }
}

}  // namespace
