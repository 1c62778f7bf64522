// The observations of a network, linearised one group at a time, and the order of its unknowns.
//
// Reduced unknowns are those of cameras, photos, planes and of points that other observations than
// image points and planes tie to each other; all other points are eliminated one by one.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "zu/adjust/network.h"

namespace zu::internal {

using Vec3 = std::array<double, 3>;

// What is being estimated. Object coordinates are reduced by the network's centre.
struct NetworkState {
  struct Photo {
    std::array<double, 9> r;
    Vec3 x0;
  };
  struct Plane {
    Vec3 n;
    double d;  // n . P = d
  };
  std::vector<ZuCamera> cameras;
  std::vector<Photo> photos;
  std::vector<Vec3> points;
  std::vector<Plane> planes;
};

struct NetworkObservation {
  ZuNetworkKind eKind;
  int iIndex;  // of its kind
  int iSub;    // plane: which of its points; parameter: which
  int iPoint;  // the eliminated point it touches, or -1
  bool bUsed;
};

// One linearised group, divided by the root of its covariance L L'.
struct NetworkGroup {
  static constexpr int kWidest = ZuNetworkParameters;
  struct Part {
    int iOffset, n;
    double j[3][kWidest];
  };
  int m;
  double e[3];  // adjusted minus observed
  double l[3][3];
  int iParts;
  Part parts[3];
  int iPoint;  // eliminated, or -1
  double p[3][3];
};

class NetworkModel {
 public:
  static constexpr int kGenerators = 7;  // shift, rotation, scale

  // Without the points of those indexes. bHold: free motions may have to be held.
  NetworkModel(const ZuNetwork& network, const std::vector<int>& undecided, bool bHold);

  // Why the network can't be adjusted at all; empty where it can.
  const std::string& Fault() const { return m_strFault; }
  const std::vector<std::string>& Warnings() const { return m_warnings; }

  const ZuNetwork& Network() const { return m_network; }
  const NetworkState& Start() const { return m_start; }
  const Vec3& Centre() const { return m_centre; }
  double Size() const { return m_dSize; }  // of the object, about its centre

  std::vector<NetworkObservation>& Observations() { return m_observations; }
  const std::vector<NetworkObservation>& Observations() const { return m_observations; }
  // Of an eliminated point, in the order of their lists; of all that touch none.
  const std::vector<int>& OfPoint(int iPoint) const { return m_ofPoint[Index(iPoint)]; }
  const std::vector<int>& Others() const { return m_others; }

  int Reduced() const { return m_iReduced; }
  // Tiles of reduced unknowns that stand together, see TileCholesky; the unknowns from HeldFrom()
  // on decide every motion of the network.
  const std::vector<int>& TileStarts() const { return m_tileStarts; }
  const std::vector<char>& Coupled() const { return m_coupled; }
  int HeldFrom() const { return m_iHeldFrom; }
  int CameraOffset(int i) const { return m_cameraOffset[Index(i)]; }
  const std::vector<int>& CameraParameters(int i) const { return m_parameters[Index(i)]; }
  int PhotoOffset(int i) const { return m_photoOffset[Index(i)]; }  // -1: not estimated
  int PlaneOffset(int i) const { return m_planeOffset[Index(i)]; }
  int PointOffset(int i) const { return m_pointOffset[Index(i)]; }  // -1: eliminated, or not used
  bool IsEliminated(int i) const { return m_bEliminated[Index(i)] != 0; }
  bool IsPointUsed(int i) const { return m_bPointUsed[Index(i)] != 0; }
  bool IsPhotoUsed(int i) const { return m_bPhotoUsed[Index(i)] != 0; }
  // The photos of a point's used image points.
  std::vector<int> RaysOf(int iPoint) const;
  // Axes of a point that are estimated.
  bool IsFree(int iPoint, int iAxis) const;
  int FreeAxes(int iPoint) const;

  int CountObservations() const;  // of the groups used
  int CountUnknowns() const;

  // The number of observations of a group, and its covariance's root.
  int Dimension(const NetworkObservation& observation) const;

  // False where the group has no value at this state (a point in the plane of the projection
  // centre, or beyond the reach of the camera's model).
  bool Linearise(const NetworkObservation& observation, const NetworkState& state,
                 NetworkGroup* pGroup) const;
  // The sum of squares over all groups used; infinite where one has no value.
  double Cost(const NetworkState& state) const;

  // The motion of the unknowns under the seven generators at a state: rows of reduced unknowns, and
  // of a point's axes (0 where fixed). Shifts are by the object's size.
  std::vector<std::array<double, kGenerators>> ReducedMotion(const NetworkState& state) const;
  void PointMotion(const NetworkState& state, int iPoint, double (*pRows)[kGenerators]) const;
  // 7 x 7, row by row: how far the given lengths and places resist each motion; 0 where the
  // motion is free. Image points and planes resist none.
  std::array<double, kGenerators * kGenerators> Resistance(const NetworkState& state) const;
  // That of fixed coordinates alone.
  std::array<double, kGenerators * kGenerators> FixedResistance(const NetworkState& state) const;

  // Moves the whole network by a motion.
  void Move(const double* pMotion, NetworkState* pState) const;
  // Adds a step: reduced unknowns, and three of each point.
  void Add(const std::vector<double>& reduced, const std::vector<Vec3>& points,
           NetworkState* pState) const;

  // "photo 7, point 12"; of control "control point 12".
  std::string Name(const NetworkObservation& observation) const;

 private:
  static size_t Index(int i) { return static_cast<size_t>(i); }
  bool CheckCameras();
  bool CheckPhotos();
  bool CheckPoints();
  bool CheckImages();
  bool CheckLengths();
  bool Fail(const std::string& strText);
  void DropUndecided(const std::vector<int>& undecided);
  void SetCentre();
  void OrderUnknowns();
  void OrderForSolution(bool bHold);
  std::vector<int> OffsetsOf(const NetworkObservation& observation) const;
  std::vector<std::vector<int>> Neighbours(const std::vector<int>& nodeOf, size_t uNodes) const;
  std::vector<int> Holders() const;
  void ListObservations();
  void StartPlanes();
  void AddObservation(ZuNetworkKind eKind, int iIndex, int iSub, int iPoint);

  bool LineariseImage(int iIndex, const NetworkState& state, NetworkGroup* pGroup) const;
  void AddPoint(int iPoint, int iRows, const double (*pJ)[3], NetworkGroup* pGroup) const;

  const ZuNetwork& m_network;
  std::string m_strFault;
  std::vector<std::string> m_warnings;
  NetworkState m_start;
  Vec3 m_centre{};
  double m_dSize = 1.0;
  std::vector<char> m_bPhotoUsed, m_bPointUsed, m_bEliminated, m_bImageUsed;
  std::vector<int> m_rays;
  int m_iReduced = 0, m_iHeldFrom = 0;
  std::vector<int> m_tileStarts;
  std::vector<char> m_coupled;
  std::vector<int> m_cameraOffset, m_photoOffset, m_planeOffset, m_pointOffset;
  std::vector<std::vector<int>> m_parameters;
  std::vector<NetworkObservation> m_observations;
  std::vector<std::vector<int>> m_ofPoint;
  std::vector<int> m_others;
};

// R exp[w].
std::array<double, 9> RotateBy(const std::array<double, 9>& r, const Vec3& w);

}  // namespace zu::internal
