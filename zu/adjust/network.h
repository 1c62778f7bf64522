// Bundle adjustment of photos with self-calibration: object points, orientations and cameras from
// measured image points, control and other known lengths, by least squares.
//
//   measured = camera(C, XH, YH, A1 ... C2; (x, y)),  (x, y) = -C (v1, v2) / v3,  v = R^T (P - X0)
//
// Lengths of the object are those of the project, lengths of the image mm (y up, origin at the
// image centre), angles radians. R maps image vectors to object space; small rotations turn about
// the image axes, R becomes R exp[w]. Residuals are adjusted minus observed; those of an image
// point are of the measured coordinates. Weights are 1 over the squared standard deviations, sigma0
// is 1 a priori.
//
// Sources: D. C. Brown, "The bundle adjustment: progress and prospects", 1976 (model, elimination
// of the points); K. R. Koch, "Parameter estimation and hypothesis testing in linear models", 1999
// (tests, inner conditions); W. Baarda, "S-transformations and criterion matrices", 1973 (datum).
#pragma once

#include <array>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "zu/adjust/adjust_status.h"
#include "zu/adjust/adjust_test.h"
#include "zu/adjust/export.h"
#include "zu/photo/camera.h"

// Parameters of a camera that can be estimated. Mode and r0 stay.
enum ZuNetworkParameter : int {
  ZuNetworkC,
  ZuNetworkXh,
  ZuNetworkYh,
  ZuNetworkA1,
  ZuNetworkA2,
  ZuNetworkA3,
  ZuNetworkB1,
  ZuNetworkB2,
  ZuNetworkC1,
  ZuNetworkC2,
  ZuNetworkParameters  // their number
};

// "c", "xh", ...; null for other values. Static text.
ZU_ADJUST_API const char* ZuNetworkParameterName(int iParameter);
// Whether the model of the camera's mode has it (modes 0, 2, 3).
ZU_ADJUST_API bool ZuNetworkHasParameter(const ZuCamera& camera, int iParameter);
ZU_ADJUST_API double ZuNetworkParameterValue(const ZuCamera& camera, int iParameter);

// Standard deviation of what is estimated freely.
inline constexpr double kZuNetworkFree = std::numeric_limits<double>::infinity();

struct ZuNetworkCamera {
  ZuCamera camera;  // start values
  // By parameter: 0 fixed, kZuNetworkFree, or the standard deviation of the start value, which is
  // then an observation.
  std::array<double, ZuNetworkParameters> adSd{};
};

struct ZuNetworkPhoto {
  unsigned uId = 0;
  int iCamera = 0;  // index into the cameras; many photos may share one
  std::array<double, 9> adRotation{1, 0, 0, 0, 1, 0, 0, 0, 1};  // R by rows; start value
  std::array<double, 3> adPosition{};                           // X0; start value
  // A projection centre measured from outside: its coordinates and their standard deviations, by
  // axis; 0 not measured.
  std::array<double, 3> adMeasured{};
  std::array<double, 3> adMeasuredSd{};
};

struct ZuNetworkPoint {
  unsigned uId = 0;
  std::array<double, 3> adPosition{};  // start value
  // Control by axis, as the bits of a point's control code (1 X, 2 Y, 4 Z): the given coordinate,
  // with its standard deviation, 0 for one that is fixed.
  int iControl = 0;
  std::array<double, 3> adGiven{};
  std::array<double, 3> adGivenSd{};
  std::array<double, 3> adGivenCovariance{};  // xy xz yz, of coordinates that are given, not fixed
  bool bDatum = true;                         // takes part in the inner conditions
};

struct ZuNetworkImagePoint {
  int iPhoto = 0, iPoint = 0;              // indexes
  double x = 0.0, y = 0.0;                 // measured [mm]
  double sxx = 0.0, sxy = 0.0, syy = 0.0;  // covariance [mm^2], positive definite
};

struct ZuNetworkDistance {
  int iFrom = 0, iTo = 0;  // indexes of points
  double dDistance = 0.0, dSd = 0.0;
};

// Coordinate of iTo less that of iFrom on an axis (0 X, 1 Y, 2 Z): a height difference, or a step.
struct ZuNetworkDifference {
  int iFrom = 0, iTo = 0, iAxis = 2;
  double dDifference = 0.0, dSd = 0.0;
};

// Points on a common plane, which is estimated; dSd of their distances from it, above 0.
struct ZuNetworkPlane {
  std::vector<int> points;
  double dSd = 0.0;
};

enum class ZuNetworkDatum {
  Control,  // what is given decides the frame
  // Where what is given leaves the frame free, inner conditions over the datum points decide it: of
  // all solutions the one closest to their start positions, and the least trace of their
  // covariance.
  Inner
};

struct ZuNetworkOptions {
  ZuNetworkDatum eDatum = ZuNetworkDatum::Control;
  // Inner conditions decide the scale too, unless distances or control do.
  bool bInnerScale = true;
  ZuTestOptions test;
  bool bStatistics = true;  // covariances and tests; false: the estimate alone
  int iMaxSteps = 100;
  // Called after each step with its number and sigma0; false ends the adjustment as not converged.
  bool (*pfnProgress)(void* pContext, int iStep, double dSigma0) = nullptr;
  void* pProgressContext = nullptr;
};

// One group of observations, n of them; elements from n on are 0.
struct ZuNetworkTest {
  int n = 0;
  bool bUsed = true;       // false: left out, set aside, or without a point that could be estimated
  double adV[3] = {};      // residuals, adjusted minus observed [unit of the observation]
  double adR[3] = {};      // redundancy numbers
  double adW[3] = {};      // v / (sigma sqrt(r)), sigma a priori; 0 where r vanishes
  double adNabla[3] = {};  // smallest error that is found; infinite where r vanishes
  double dTest = 0.0;      // T of the group, over sigma0^2 of the kind told in the result
  double dLimit = std::numeric_limits<double>::infinity();
  bool bControlled = false;  // every redundancy number reaches the least one of the options
};

enum class ZuNetworkKind { Image, Control, Centre, Distance, Difference, Plane, Parameter };

// A group that snooping set aside.
struct ZuNetworkSetAside {
  ZuNetworkKind eKind = ZuNetworkKind::Image;
  int iIndex = 0;      // into the observations of its kind; of control: into the points
  double dTest = 0.0;  // when it was set aside
  double dLimit = 0.0;
  double adError[3] = {};  // estimated: observed less what the others predict
};

// An unknown, to ask for its covariances. Axis: of a position 0 to 2, of a photo's small rotation 3
// to 5, of a camera the parameter.
struct ZuNetworkUnknown {
  enum Kind { Camera, Photo, Point } eKind = Point;
  int iIndex = 0, iAxis = 0;
};

class ZuNetworkCovariance;

// What was adjusted, and how well. Lists run parallel to those of the network. Standard deviations
// hold sigma0 of `sigmaKind`; they are 0 for what is fixed, NaN for what was not estimated.
struct ZU_ADJUST_API ZuNetworkResult {
  ZuAdjustStatus status = ZuAdjustStatus::NotConverged;
  std::string strText;  // what is wrong and what would help; empty where the status is good
  // What the user should know beside: points seen once or at a small angle, correlations above
  // 0.95, parameters that are not significant. In the order of the lists.
  std::vector<std::string> warnings;

  double dSigma0 = 0.0;  // a posteriori; 1 without redundancy
  ZuSigmaKind sigmaKind = ZuSigmaKind::APosteriori;
  int iObservations = 0, iUnknowns = 0, iDefect = 0, iRedundancy = 0, iSteps = 0;
  // Smallest eigenvalue of the normal matrix of cameras and orientations, scaled to a diagonal of
  // ones: the condition. A network is told as a rank defect where it is below 1e-13, or where the
  // standard deviation of c, xh or yh exceeds 1 % of c, sigma0 a priori.
  double dLeastEigenvalue = 0.0;

  std::vector<ZuCamera> cameras;
  std::vector<std::array<double, ZuNetworkParameters>> cameraSd;
  std::vector<ZuNetworkPhoto> photos;                  // adjusted
  std::vector<std::array<double, 6>> photoSd;          // position, small rotation
  std::vector<std::array<double, 3>> photoAngles;      // a, b, c of R = Ry(b) Rx(a) Rz(c)
  std::vector<std::array<double, 3>> photoAnglesSd;    // NaN at a = +-pi/2
  std::vector<std::array<double, 3>> points;           // adjusted
  std::vector<std::array<double, 6>> pointCovariance;  // xx yy zz xy xz yz
  std::vector<char> photoUsed, pointUsed;
  std::vector<int> pointRays;  // used image points

  std::vector<ZuNetworkTest> imageTests, controlTests, centreTests, distanceTests, differenceTests;
  std::vector<std::vector<ZuNetworkTest>> planeTests;  // by plane, by point
  std::vector<ZuNetworkSetAside> setAside;

  // Covariance matrix of any unknowns, row by row, with sigma0; rows and columns of what is fixed
  // are 0, of what was not estimated NaN. Empty where the status is not good or without statistics.
  // Cost: about a product of rays for a pair of points whose photos share points, a solution of the
  // equations for another unknown; the inverse of all is never formed.
  std::vector<double> Covariance(const std::vector<ZuNetworkUnknown>& unknowns) const;
  // Standard deviation of the distance of two points.
  double DistanceSd(int iFrom, int iTo) const;

  std::shared_ptr<const ZuNetworkCovariance> pCovariance;
};

// The network as it was measured. Fields are public: fill them, then Adjust. Indexes out of range,
// and numbers that are not finite, give status NotFinite with a sentence naming photo and point.
class ZU_ADJUST_API ZuNetwork {
 public:
  // Adjusts without changing the network; on one thread, the same bits each time. Steps of
  // Levenberg and Marquardt until the step is below 1e-6 of the standard deviations.
  ZuNetworkResult Adjust(const ZuNetworkOptions& options) const;

  std::vector<ZuNetworkCamera> cameras;
  std::vector<ZuNetworkPhoto> photos;
  std::vector<ZuNetworkPoint> points;
  std::vector<ZuNetworkImagePoint> images;
  std::vector<ZuNetworkDistance> distances;
  std::vector<ZuNetworkDifference> differences;
  std::vector<ZuNetworkPlane> planes;
};
