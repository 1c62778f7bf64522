// What the commands that construct have in common: points by name, the plane they work in, and the
// points constructed.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "context.h"
#include "exit_code.h"
#include "options.h"
#include "point_input.h"
#include "zu/cad/cad_fit.h"
#include "zu/cad/cad_plane.h"

namespace cli {

struct ConstructValues {
  std::string strPoints, strOutput;
  std::string strUse;  // "1,2,7"; empty: all
  std::string strPlane = "xy";
  PointFormat format;
  double dSigma = 0.0, dLimit = 0.0;  // of a coordinate; 0: not told
};

// Declares POINTS, --plane, --columns, --duplicates and -o.
void AddConstructOptions(Options& options, ConstructValues* pValues);
// Declares --points, and --sigma and --tolerance for what is fitted.
void AddUseOption(Options& options, ConstructValues* pValues, const char* szHelp);
void AddFitOptions(Options& options, ConstructValues* pValues);

// The parts of a text between separators.
std::vector<std::string> PartsOf(const std::string& strText, char cSeparator);

using PointRefs = std::vector<const ZuPoint*>;

class Construction {
 public:
  // Reads the points. Throws CommandError as ReadPoints does.
  Construction(const ConstructValues& values, Context& context);

  // By name or id. Throws CommandError (bad input).
  const ZuPoint& Find(const std::string& strName) const;
  // "1,2,7", iCount of them where it is not 0. Throws CommandError, (usage) for another count.
  PointRefs FindAll(const std::string& strNames, int iCount, const char* szOption) const;
  // Those of --points, else all.
  PointRefs Used() const;
  const ZuPointList& Points() const { return m_points; }

  // Chooses the plane for these points. Throws CommandError: (usage) --plane cannot be understood,
  // (undetermined) there is none.
  void ChoosePlane(const PointRefs& points);
  ZuPoint2d InPlane(const ZuPoint& point) const;
  std::vector<ZuPoint2d> InPlane(const PointRefs& points) const;
  // The direction of a bearing, which counts clockwise from the y axis, or the other way round.
  static double Turned(double dAngle);

  // Throws CommandError (undetermined) unless the status is good.
  void Check(eCadStatus eStatus, const char* szWhat) const;

  void AddPoint(const std::string& strName, const ZuPoint3d& p);
  void AddPoint(const std::string& strName, const ZuPoint2d& p) {
    AddPoint(strName, m_plane.ToSpace(p));
  }
  // A line of the result, in the text alone.
  void TellLine(const std::string& strTitle, const std::string& strText) {
    m_lines.emplace_back(strTitle, strText);
  }
  // A line of the result, with its key; "_rad" at its end stands in the JSON alone.
  void Tell(const char* szKey, const std::string& strText, Json value);
  void TellLength(const char* szKey, double d, double dSd = 0.0);
  void TellFit(const ZuCadFit& fit);
  // A length for each point.
  void TellResiduals(const char* szTitle, const PointRefs& points,
                     const std::vector<double>& residuals);

  // Prints result and plane, writes -o. kNotAcceptable where dLargest is beyond --tolerance.
  ExitCode Finish(const char* szKind, double dLargest = 0.0);

 private:
  void FitPlane(const PointRefs& points);
  void WritePlane(std::ostream& text) const;
  Json PlaneJson() const;

  const ConstructValues& m_values;
  Context& m_context;
  ZuPointList m_points, m_made;
  ZuCadPlane m_plane;
  bool m_bPlane = false;
  double m_dOff = 0.0;  // of the point farthest off the plane
  std::vector<std::pair<std::string, std::string>> m_lines;
  std::string m_strResiduals;  // title of the table below
  std::vector<std::pair<std::string, double>> m_residuals;
  Json m_facts = Json::object();
};

}  // namespace cli
