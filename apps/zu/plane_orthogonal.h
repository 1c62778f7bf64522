// The orthogonal fit of zu plane: text, JSON, foot points, log and report.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "adjust_report.h"
#include "commands.h"
#include "plane_values.h"
#include "zu/adjust/fit_primitives.h"
#include "zu/rectify/calc_plane.h"

namespace cli {

// "0.6 x + 0.8 y + 0.0 z - 2.5 = 0".
std::string EquationOf(const ZuPlane& plane);

class OrthogonalPlane {
 public:
  // Throws CommandError (undetermined) where there is no plane to trust.
  OrthogonalPlane(const PlaneValues& values, const ZuPointList& points);

  // Writes the result, the foot points and the report, as far as they are wanted.
  ExitCode Report(Context& context);
  // The fit as the library's log shows it.
  ZuCalcPlane& Log() { return m_log; }
  const ZuPlane& Plane() const { return m_plane.plane; }
  // Of the points used, as they stand in the file.
  std::vector<std::pair<std::string, double>> Distances() const;

 private:
  // A fit whose log is that of points fitted elsewhere.
  class LogOf : public ZuCalcPlane {
   public:
    void Take(const ZuPointList& points) { m_filteredPoints = points; }
  };

  struct Row {
    const ZuPoint* pPoint;
    const ZuFittedPoint* pFitted;
  };

  void Fit();
  [[noreturn]] void Fail() const;
  std::string Verdict() const;
  void WriteText(std::ostream& stream) const;
  void FillJson(Json* pRoot) const;
  void WriteFeet(Context& context) const;
  AdjustReport Page() const;
  double TestLimit() const;

  const PlaneValues& m_values;
  const ZuPointList& m_points;
  ZuPlaneFit m_plane;
  std::vector<Row> m_rows;    // in the order of the file
  std::vector<Row> m_sorted;  // set aside first, then the largest distance
  LogOf m_log;
};

}  // namespace cli
