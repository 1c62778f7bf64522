// Interior orientation of a photo: camera constant, principal point and lens distortion.
//
//   measured (x, y)  --Adjust-->  corrected (x', y')  --InvAdjust-->  measured (x, y)
//
// Lengths are millimetres on the image plane, origin at the image centre. With r the distance from
// the principal point, a radial model multiplies a coordinate by 1 - d(r); d vanishes at r0:
//
//   d(r) = a1 (r^2 - r0^2) + a2 (r^4 - r0^4) + a3 (r^6 - r0^6)          a3 in the CAP mode only
//
// One thread at a time: InvAdjust fills tables shared by all cameras of the process and a cache in
// the camera. Adjust alone may run on several threads.
#pragma once

#include <iosfwd>

#include "zu/export.h"
#include "zu/foundation/list.h"
#include "zu/points/flag.h"

class ZuPoint;
class ZuPointList;
class ZuReaderObject;

// The values stand in project files: append, never renumber. A file may hold any other number; it
// is kept, and such a camera has no forward map.
enum eCameraMode : int {
  eCameraModeZuvo = 0,     // a1, a2, r0
  eCameraModeViva = 1,     // a1, a2, r0, reduced to a second principal point (total stations)
  eCameraModeCap = 2,      // a1, a2, a3, r0, affinity b1, b2, tangential c1, c2
  eCameraModePinhole = 3,  // no distortion
};

// Outcome of ZuCamera::AdjustExact and InvAdjustExact.
enum eCameraInverse : int {
  eCameraInverseOk = 0,             // the point found maps to the point given
  eCameraInverseNoCamera = 1,       // id 0
  eCameraInverseNoModel = 2,        // an unknown mode
  eCameraInverseOutside = 3,        // where the model is not one to one, or not finite
  eCameraInverseNoConvergence = 4,  // no measured point of the valid image maps there
};

// "ok", "no camera", ...; "unknown" for other values.
ZU_API const char* GetCameraInverseText(eCameraInverse eStatus);

class ZU_API ZuCamera : public ZuListnode, public ZuFlag {
 public:
  explicit ZuCamera(unsigned int uId = 0, double dC = 0.0, double dXh = 0.0, double dYh = 0.0,
                    double dA1 = 0.0, double dA2 = 0.0, double dR0 = 0.0,
                    const char* szName = nullptr);
  // Reads itself: ReadFullData with bFullData, otherwise Read.
  ZuCamera(ZuReaderObject* pObject, bool bFullData);
  // Copies id, name and all parameters; the last-call fields become 0, list links are not copied.
  ZuCamera(const ZuCamera& other);
  ~ZuCamera() override;
  ZuCamera& operator=(const ZuCamera& other);
  ZuCamera& Set(const ZuCamera& other) { return *this = other; }

  // List steps: the neighbours, and the nearest node in that direction with (flag word & mask)
  // not 0, null at the end. First starts at this node.
  ZuCamera* First(int iMask);
  ZuCamera* Next(int iMask);
  ZuCamera* Previous(int iMask);
  ZuCamera* Next() const { return static_cast<ZuCamera*>(m_pNext); }
  ZuCamera* Previous() const { return static_cast<ZuCamera*>(m_pPrev); }

  // Corrects a measured point in place: removes the distortion and the principal point. False and
  // point untouched: id 0, pinhole camera, unknown mode. Mode 2 iterates to a stop rule of 1e-4
  // square millimetres and answers true whatever the reason for stopping.
  bool Adjust(double* x, double* y) const;
  bool Adjust(ZuPoint* pPoint) const;
  // Each point of the list; single results are dropped. False for a null list alone.
  bool Adjust(ZuPointList* pList) const;

  // Finds the measured point whose correction is (x, y), exact to the interpolation within a cell
  // of the inverse table. False and point untouched: id 0, NaN constant, point outside the table
  // (|x| or |y| at or above its half-width), no finite answer.
  //
  // Required: true also for a point that no node pair of the table encloses, such as one beyond the
  // corrected border of the image: the answer is then extrapolated from the cell at which the
  // search ended, and Adjust of it may lie far from (x, y). InvAdjustExact refuses such points.
  //
  // Required: a pinhole camera answers true here, leaving the point, although Adjust answers
  // false. Applications branch on the pair of answers.
  //
  // Required: a table belongs to id and camera constant alone. After a change of any other
  // parameter the old table still answers until DeleteInvAdjustTables; building 609,961 nodes at
  // every edit would stop an interactive calibration.
  //
  // The first call of an (id, c) pair builds the table on all processors; later calls allocate
  // nothing. Each table takes 9.8 MB and stays: a calibration that changes c adds one with every
  // value it tries, until DeleteInvAdjustTables.
  bool InvAdjust(double* x, double* y) const;
  bool InvAdjust(ZuPoint* pPoint) const;
  bool InvAdjust(ZuPointList* pList) const;
  // Frees all tables of the process.
  static void DeleteInvAdjustTables();

  // The model without the stop rule of Adjust and without the table, in place: AdjustExact from
  // measured to corrected, InvAdjustExact back, each the other's inverse to 1e-12 mm. In modes 0
  // and 1 AdjustExact gives the bits of Adjust; in mode 2 it takes
  //
  //   measured = (xh, yh) + (x, y) - D(x, y)      D: CalcDistortA1A2A3B1B2C1C2
  //
  // to the end by Newton's method (InvAdjustExact evaluates it as it stands). A pinhole camera
  // answers eCameraInverseOk both ways and leaves the point.
  //
  // Both refuse points where the model is not known to be one to one: where the symmetric part of
  // its derivative is not positive on the whole disk from the distortion centre to the point.
  // InvAdjustExact refuses measured points beyond the half-width of the valid image, too (RM, or
  // 2.1 r0, or 30 mm). Unless the result is eCameraInverseOk, (x, y) stay. No cache, no shared
  // state: several threads may call them.
  eCameraInverse AdjustExact(double* x, double* y) const;
  eCameraInverse InvAdjustExact(double* x, double* y) const;
  // Largest measured distance from the distortion centre [mm] up to which the radial part of the
  // forward map grows with r and so has one inverse; at most dSearch (0: m_dRMax, or 2.1 r0 when
  // that is 0, or 30). 0 for a mode without a forward map.
  double GetValidRadius(double dSearch = 0.0) const;

  // Parts of the models; lengths mm, d relative.
  double Calc_r(const double& x, const double& y) const;
  // d(r) with two and three terms; exactly 0 at r = 0.
  double CalcdrA1A2(const double& r) const;
  double CalcdrA1A2(const double& x, const double& y) const;
  double CalcdrA1A2A3(const double& r) const;
  double CalcdrA1A2A3(const double& x, const double& y) const;
  // b1 x + b2 y.
  double CalcdrAffin(const double& x, const double& y) const;
  void CalcTanDistort(double& dx, double& dy, const double& x, const double& y,
                      const double& r) const;
  // Required: the two-term distortion without the guard at r = 0, where it gives
  // -a1 r0^2 - a2 r0^4; a formula of its own beside CalcdrA1A2.
  double Calcd(double x, double y) const;
  // What a distortion curve shows at the point: d in modes 0 and 1; in mode 2 the length [mm] of
  // the correction, negative where the radial part is; 0 in other modes.
  double Calc_drForGraph(const double& x, const double& y) const;
  // Distances of the two principal points from the origin, summed.
  double GetXhYhRadius() const;

  bool IsValid() const { return m_uId != 0 && m_dC != 0.0; }
  bool IsOldZuvo() const { return m_iMode == eCameraModeZuvo; }
  bool IsTs15() const { return m_iMode == eCameraModeViva; }
  bool IsPinholeCamera() { return m_iMode == eCameraModePinhole; }
  void SetPinholeCamera() { m_iMode = eCameraModePinhole; }
  // Makes a total-station camera: c becomes the working constant, the former one is kept in
  // m_dCViva; table half-width 8 mm.
  void SetTs15(double c, double xh, double yh);

  // { id c xh yh a1 a2 r0 "name" }: positional, with |c| and RM = 2.1 r0. Always 1.
  int Read(ZuReaderObject* pObject);
  // Keyword form; RM becomes 2.1 r0 when absent or 0. Always 1.
  // Required: unlike Read it keeps the sign of c.
  int ReadFullData(ZuReaderObject* pObject);
  // Required: these three write nothing, and so the lists of cameras write empty blocks.
  // Parameters leave the library through the Gentri line and the two Export operations.
  std::ostream& Write(std::ostream& stream) const;
  std::ostream& WriteFullData(std::ostream& stream, bool bUnused) const;
  std::ostream& WriteTS15Data(std::ostream& stream) const;
  // Write the values of Read, and the keywords of ReadFullData, one a line, so that these
  // make the camera again to the last bit; without the block's braces. Keywords of 0 that say
  // nothing are left out. Export holds the sixth parameter r0 and the name as the last ones: mode,
  // RM and the others are in no such file, nor is a negative c. RM of 0 comes back as 2.1 r0.
  std::ostream& Export(std::ostream& stream) const;
  std::ostream& ExportFullData(std::ostream& stream) const;
  // One line for the adjustment program, without line end: id |c| xh yh a1 a2 r0, precision 8.
  // A CAP camera gives its constant and five zeros: the program knows no such coefficients.
  std::ostream& WriteGentriFormat(std::ostream& stream) const;

  // One line of the parameters on the debug output; null counts as an empty prefix.
  void DbgPrintf(const char* szPrefix);
  // Adjust and InvAdjust over a grid of 0.5 mm out to m_dRMax (dRadius when that is 0), each point
  // and the largest differences on the debug output.
  void DbgTestInvAdjust(double dRadius);

 protected:
  // The correction (dx, dy) at (x, y), both relative to the principal point. Returns d.
  double CalcDistortA1A2(double& dx, double& dy, const double& x, const double& y) const;
  // Returns dx^2 + dy^2.
  double CalcDistortA1A2A3B1B2C1C2(double& dx, double& dy, const double& x, const double& y) const;

 public:
  double m_dC = 0.0;       // camera constant [mm]
  double m_dXh = 0.0;      // principal point, also the centre of the polynomials [mm]
  double m_dYh = 0.0;      //
  double m_dA1 = 0.0;      // radial coefficient of r^2
  double m_dA2 = 0.0;      // radial coefficient of r^4
  double m_dR0 = 0.0;      // radius of zero distortion [mm]
  double m_dCViva = 0.0;   // second camera constant [mm]
  double m_dXhViva = 0.0;  // second principal point [mm]
  double m_dYhViva = 0.0;
  double m_dA3 = 0.0;  // radial coefficient of r^6 (CAP)
  double m_dC1 = 0.0;  // tangential coefficients (CAP)
  double m_dC2 = 0.0;
  double m_dB1 = 0.0;  // affinity coefficients (CAP)
  double m_dB2 = 0.0;
  double m_dRMax = 0.0;                       // half-width of the inverse table's domain [mm]
  static constexpr double kTableReach = 2.1;  // m_dRMax in units of r0 where a file gives none
  int m_iMode = eCameraModeZuvo;
  // Last call of InvAdjust; a copy starts with zeros.
  mutable double m_dLastInX = 0.0;
  mutable double m_dLastInY = 0.0;
  mutable double m_dLastOutX = 0.0;
  mutable double m_dLastOutY = 0.0;

 private:
  void AdjustCap(double* x, double* y) const;
  bool InvAdjustByTable(double* x, double* y) const;
  bool InvAdjustByIteration(double* x, double* y) const;
};

ZU_DECLARE_LIST(ZuCamera);
