// A stored plane transformation of one of four kinds, for image coordinates above all.
//
//   Helmert     X = a0 + a1 x - a3 y             Y = a2 + a3 x + a1 y
//   affine      X = a0 + a1 x + a2 y             Y = a3 + a4 x + a5 y
//   projective  X = (a0 x + a1 y + a2) / w       Y = (a3 x + a4 y + a5) / w,  w = a6 x + a7 y + 1
//   polynomial  X = sum of a0..a9, Y = sum of a10..a19, each times
//               1, x, y, x^2, xy, y^2, x^3, x^2 y, x y^2, y^3
#pragma once

#include <iosfwd>

#include "zu/export.h"
#include "zu/foundation/link.h"

class ZuMatrix;
class ZuPoint;
class ZuReaderObject;

// The values stand in project files; any other number is kept and transforms nothing.
enum eZuTrafo2DType : int {
  eZuTrafo2DNone = 0,
  eZuTrafo2DHelmert = 1,
  eZuTrafo2DAffin = 2,
  eZuTrafo2DProjektiv = 3,
  eZuTrafo2DPolynomial = 4,
  eZuTrafo2DInvHelmert = 5  // a name only; never stored
};

class ZU_API ZuTrafo2d : public LinkHdl {
 public:
  static constexpr int kCoefficients = 20;

  ZuTrafo2d() = default;
  ZuTrafo2d(const ZuTrafo2d&) = default;
  virtual ~ZuTrafo2d() = default;
  ZuTrafo2d& operator=(const ZuTrafo2d&) = default;

  // Type 0, all coefficients 0.0.
  void Init();
  // The identity as a Helmert transformation; coefficients that it does not use stay.
  void SetIdent();
  // Type and coefficients of another one.
  void Set(const ZuTrafo2d& other);
  eZuTrafo2DType GetType() const { return m_eType; }
  double GetCoef(int i) const { return m_adCoef[i]; }  // i from 0 to 19

  // In place. False, coordinates untouched, for any type but 1 to 4. The projective denominator is
  // not tested: on its horizon the result is not finite.
  bool Transform(double* x, double* y) const;
  bool Transform(ZuPoint* pPoint) const;  // z stays

  // The inverse of a Helmert transformation, whatever the type says. False, coordinates untouched,
  // where a1 and a3 are 0.0.
  bool TransInvHelmert(double* x, double* y) const;
  bool TransInvHelmert(ZuPoint* pPoint) const;

  // The 3x3 matrix that maps (x, y, 1); the identity for a polynomial and for no type.
  void BuildMatrix(ZuMatrix* pMatrix) const;
  // Stores the type and reads the coefficients of types 1 to 3 back from a 3x3 matrix, whose third
  // row must be scaled to (.., .., 1); other types store the type only.
  //
  // Required: for type 3 a5 is taken from element (2, 2) and a6 from (2, 1), so the matrix of a
  // projective transformation does not come back unchanged. Stored projects depend on it.
  void SetFromMatrix(const ZuMatrix& matrix, eZuTrafo2DType eType);

  // "Helmert", "Affin", "Projektiv", "Polynomial", "Inv. Helmert"; "None" for any other value.
  const char* GetTrafoName() const { return GetTrafoName(m_eType); }
  static const char* GetTrafoName(eZuTrafo2DType eType);

  // Type and its coefficients, from the token in hand on. Returns 1.
  int Read(ZuReaderObject* pObject);
  // The older form, whose codes are 0 projective, 1 affine, 2 Helmert, 3 polynomial; another code
  // leaves the type and reads nothing. Returns 1.
  int ReadV50(ZuReaderObject* pObject);
  // The current form: the type, then the coefficients, four a line.
  std::ostream& Write(std::ostream& stream) const;
  // The same in one line, as Read takes it to the last bit; coefficients that the type does not use
  // are not written.
  std::ostream& Export(std::ostream& stream) const;

  // One line on the debug output; szPrefix stands in front.
  void DbgPrintf(const char* szPrefix) const;

 protected:
  int CoefficientCount() const;
  void ReadCoefficients(ZuReaderObject* pObject);

  eZuTrafo2DType m_eType = eZuTrafo2DNone;
  double m_adCoef[kCoefficients] = {};
};
