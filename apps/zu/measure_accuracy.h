// How well zu measure knows its points, and the chain of one of them with its numbers.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "context.h"
#include "options.h"
#include "zu/adjust/plane_point_accuracy.h"
#include "zu/project/plane_measurement.h"
#include "zu/project/project.h"

namespace cli {

struct AccuracyValues {
  std::string strSigma = "0.1px";
  double dIncidence = 10.0;  // [deg]
  std::string strExplain;    // "PHOTO,POINT"
};

// Declares --sigma, --incidence and --explain.
void AddAccuracyOptions(Options& options, AccuracyValues* pValues);

class MeasureAccuracy {
 public:
  struct Point {
    std::array<double, 6> cov;  // xx yy zz xy xz yz; NaN where it has none
    double dIncidence;          // [rad]
    double Length() const;      // standard deviation of the position
  };
  struct Photo {
    std::vector<Point> points;  // parallel to the points of the measured photo
    bool bOrientation, bCamera;
    double dSd;       // root mean square of the points' standard deviations
    int iLeast = -1;  // the point of the least angle of incidence
    int iFlat = 0;    // points below the limit
    double LeastIncidence() const;
  };

  // Of all points of `result`; `plane` tells what is known of its plane. Throws CommandError
  // (usage) for a sigma or a point to explain that cannot be read, (bad input) for one that was not
  // met.
  MeasureAccuracy(const ZuProject& project, const ZuPlaneMeasurement& result,
                  const std::optional<ZuPlaneFit>& plane, bool bFlip, const AccuracyValues& values);

  const std::vector<Photo>& Photos() const { return m_photos; }
  // Something is told beside the default: an option, or blocks of the project.
  bool IsTold() const { return m_bTold; }
  // What the standard deviations hold, in one or two sentences.
  std::string Note() const;
  // Of the points that are met at a small angle.
  void Warn(const ZuPlaneMeasurement& result, const Context& context) const;
  // The chain asked for; nothing without.
  void PrintChain(const std::string& strUnit, std::ostream& stream) const;
  void AddJson(Json* pRoot) const;

 private:
  void Add(const ZuProject& project, const ZuMeasuredPhoto& measured, const ZuPlane& plane);
  void Explain(const ZuProject& project, const ZuPlaneMeasurement& result,
               const std::string& strWhich);

  struct Chain {
    unsigned uPhoto, uPoint;
    double adPixel[2], adCentre[3], adCentreSd[3], adRotationSd[3];
    ZuPlanePointAccuracy accuracy;
    std::vector<std::string> parameters;
  };
  ZuPlanePointOptions m_options;
  const ZuPlaneFit* m_pPlane;  // null: the plane counts as exact
  double m_dLimit;             // of the incidence [rad]
  bool m_bTold;
  std::vector<Photo> m_photos;
  std::optional<Chain> m_chain;
};

}  // namespace cli
