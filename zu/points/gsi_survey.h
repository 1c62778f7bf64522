// What a total station has recorded in a GSI file: stations, measurements and coordinates, and the
// points that follow from them.
//
//   110001+00000S01 84..10+00100000 85..10+00200000 86..10+00050000 88..10+00001600
//   110002+00000101 21.102+05000000 22.102+10000000 31..00+00012345 87..10+00001500
//
//   ZuGsiSurvey survey;
//   survey.Read("road.gsi");
//   const ZuGsiReading reading = survey.CalcPoints(ZuGsiOptions(), &points);
//
// Words of 8 and of 16 characters, in all units; lengths are in metres here, angles in radians.
// ZuReadGsi takes the recorded coordinates alone.
//
// One thread at a time.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "zu/export.h"
#include "zu/points/point_list.h"
#include "zu/points/read_coordinates.h"

// A line of the file, as far as it tells of points; in brackets the words.
struct ZuGsiRecord {
  std::uint64_t m_uLine = 0;             // from 1
  std::string m_strPoint;                // number or name (11), without what fills it up
  std::optional<double> m_direction;     // horizontal, clockwise (21) [rad]
  std::optional<double> m_zenith;        // from the zenith (22) [rad]
  std::optional<double> m_distance;      // slope distance (31), as corrected by the instrument [m]
  std::optional<double> m_prism;         // constant of the prism in it (51, 58) [m]
  std::optional<double> m_target[3];     // easting, northing, height of the point (81 to 83) [m]
  std::optional<double> m_station[3];    // of the station (84 to 86) [m]
  std::optional<double> m_targetHeight;  // of the reflector above its point (87) [m]
  std::optional<double> m_instrumentHeight;  // above the station (88) [m]

  bool HasTarget() const { return m_target[0] || m_target[1] || m_target[2]; }
  bool HasStation() const { return m_station[0] || m_station[1] || m_station[2]; }
  bool IsMeasured() const { return m_direction || m_zenith || m_distance; }
};

struct ZuGsiOptions {
  // Where a line has both, the coordinates that follow from its measurement instead of the recorded
  // ones.
  bool m_bMeasured = false;
  // Known points: stations that the file tells by their number alone, and targets that orient the
  // horizontal circle of a station. Null: none.
  const ZuPointList* m_pKnown = nullptr;
  // Bearing of the circle's zero where no known point is sighted [rad]. With 0 the directions are
  // bearings, as of an instrument that was oriented in the field.
  double m_dOrientation = 0.0;
  // The true constant of the prism [m]: distances get what it differs by from the one that the file
  // tells, 0 where it tells none.
  std::optional<double> m_prism;
  // Curvature of the earth and refraction, as the instruments reduce. An infinite radius [m]: none.
  double m_dEarthRadius = 6.37e6;
  double m_dRefraction = 0.13;
  // Standard deviations. A point gets its own from them where any is told (above 0).
  double m_dSigmaDirection = 0.0, m_dSigmaZenith = 0.0;      // of an angle [rad]
  double m_dSigmaDistance = 0.0, m_dSigmaDistancePpm = 0.0;  // [m], and by length [mm/km]
  double m_dSigmaHeight = 0.0;  // of the height of reflector and instrument, each [m]
};

// A station as it was used.
struct ZuGsiSetup {
  std::uint64_t m_uLine = 0;  // that tells it
  std::string m_strName;      // empty: not told
  bool m_bPlaced = false;     // its coordinates are known
  double m_adStation[3] = {};
  std::optional<double> m_instrumentHeight;
  double m_dOrientation = 0.0;    // bearing of the circle's zero [rad]
  int m_iSights = 0;              // to known points, which orient it
  double m_dLargestMisfit = 0.0;  // of a sight to them across its direction [m]
};

struct ZuGsiReading : ZuCoordinateReading {
  std::vector<ZuGsiSetup> m_Setups;
};

class ZU_API ZuGsiSurvey {
 public:
  // Reads the file in place of what was there. A damaged line ends the reading with a fault at its
  // first damaged word, or tolerantly is left out: a word cut short or out of step, no sign, digits
  // missing, a unit that its quantity cannot have, 60 minutes or seconds. False where findings tell
  // that something is missing. Throws nothing: without memory the lines read until then stay.
  bool Read(const char* szPath, eZuReadMode eMode = eZuReadStrict);

  const std::vector<ZuGsiRecord>& GetRecords() const { return m_Records; }
  const ZuReadFindings& GetFindings() const { return m_Findings; }

  // Appends a point for each line that has a number and recorded coordinates, where one of the
  // three that the line lacks is 0, or direction, zenith angle and distance from a station whose
  // coordinates are known:
  //
  //   E = E0 + d sin(t)   N = N0 + d cos(t)   H = H0 + h + i - r     t = direction + orientation
  //   d = Y - A X Y       h = X + B Y^2       X = s cos(z), Y = s sin(z)
  //   A = (1 - k / 2) / R                     B = (1 - k) / (2 R)
  //
  // (reduction formulas of Leica TPS instruments; Kahmen, Vermessungskunde, 1997; both faces). A
  // line without measurement that has words 84 to 86 or 88 is a station; it, the height of the
  // reflector and the constant of the prism hold until the next. Sights to known points orient the
  // circle by the mean of what each gives, weighted by its distance. Standard deviations by
  // propagation; station and orientation count as free of errors. The findings tell the points
  // without coordinates and the heights that were taken as 0. Takes n log n time.
  ZuGsiReading CalcPoints(const ZuGsiOptions& options, ZuPointList* pPoints) const;

 private:
  std::vector<ZuGsiRecord> m_Records;
  ZuReadFindings m_Findings;
};

// Both in one: appends the points of a GSI file. Its findings are those of the reading, then those
// of the points.
ZU_API ZuGsiReading ZuReadGsiPoints(const char* szPath, const ZuGsiOptions& options,
                                    ZuPointList& points, eZuReadMode eMode = eZuReadStrict);
