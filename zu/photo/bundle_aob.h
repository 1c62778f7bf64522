// Orientation of a photo as a bundle adjustment gives it: position and angles with accuracies, and
// lists of them as files for other programs.
//
//   ; comments
//   { 7  12.5 -3.25 1.75  0.1 -1.5 0.02  0.001 0.001 0.002  1e-05 1e-05 2e-05 }
//
// A block a photo: id, X0 Y0 Z0, the angles a b c of R = Ry(b) Rx(a) Rz(c) [rad], the standard
// deviations of X0 Y0 Z0 and of a b c; 0 where one is not known.
#pragma once

#include <iosfwd>

#include "zu/export.h"
#include "zu/foundation/link.h"
#include "zu/foundation/list.h"
#include "zu/foundation/read_faults.h"

class ZuPhoto;
class ZuReaderObject;
class ZuPhotoList;

class ZU_API ZuBundleAOB : public ZuListnode {
 public:
  using ZuListnode::ZuListnode;
  ZuBundleAOB() = default;
  // Id, position and angles of a photo; nothing is known of their accuracy.
  explicit ZuBundleAOB(const ZuPhoto& photo);

  // The standard deviations from the covariance (6 x 6, rows iStride numbers apart) of X0 Y0 Z0 and
  // the small turns wx wy wz about the image axes, R becoming R exp[w], at these angles. False,
  // nothing changed, where |a| is so near pi / 2 that b and c are not separate, or where a result
  // would not be finite.
  bool SetSigmas(const double* pdCovariance, int iStride = 6);
  // Orients the photo so, and marks it as oriented. False, photo untouched, where a number is not
  // finite.
  bool ApplyTo(ZuPhoto* pPhoto) const;

  // The 13 values, from the token in hand on; fewer leave by the parser's exception. Returns 1.
  int Read(ZuReaderObject* pObject);
  // The 13 values in one line, as Read takes them to the last bit; no braces.
  std::ostream& Export(std::ostream& stream) const;

  ZuBundleAOB* Next() const { return static_cast<ZuBundleAOB*>(m_pNext); }

 public:
  double m_adPosition[3] = {};       // object units
  double m_adAngles[3] = {};         // [rad]
  double m_adSigmaPosition[3] = {};  // standard deviations of both
  double m_adSigmaAngles[3] = {};
};

ZU_DECLARE_LIST(ZuBundleAOB);

class ZU_API ZuBundleAOBList : public TZuListHeader<ZuBundleAOB>, public LinkHdl {
 public:
  using TZuListHeader<ZuBundleAOB>::operator=;

  // Appends the blocks of a file. True without faults; whole blocks before a fault stay.
  bool ReadFile(const char* szPath);
  // Faults met by the last ReadFile.
  const ZuReadFaults& GetReadFaults() const { return m_ReadFaults; }
  // A header comment, then a block a line, as ReadFile takes them.
  std::ostream& Export(std::ostream& stream) const;
  // Orients the photos of these ids; the number of those.
  int ApplyTo(ZuPhotoList* pPhotos) const;

 private:
  int AddBlock(ZuReaderObject* pObject);

  ZuReadFaults m_ReadFaults;
};
