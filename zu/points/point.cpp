#include "zu/points/point.h"

#include <cmath>
#include <cstdio>

#include "zu/foundation/debug.h"
#include "zu/points/internal/flag_walk.h"

ZuPoint::ZuPoint(unsigned int uId, double x, double y, double z, short int sControl)
    : ZuListnode(uId), m_sControl(sControl), m_dX(x), m_dY(y), m_dZ(z) {}

int ZuPoint::Compare(ZuListnode* pOther) const {
  const ZuPoint& other = *static_cast<const ZuPoint*>(pOther);
  const unsigned int uThis = static_cast<unsigned int>(m_iPhoto) + m_uId;
  const unsigned int uOther = static_cast<unsigned int>(other.m_iPhoto) + other.m_uId;
  return static_cast<int>(uThis - uOther);
}

void ZuPoint::init() {
  m_iPhoto = m_iCamera = m_iUser = m_iColor = 0;
  m_sControl = m_sUser = m_snImo = 0;
  m_dX = m_dY = m_dZ = 0.0;
  m_dDX = m_dDY = m_dDZ = 0.0;
  m_dRedu1 = m_dRedu2 = m_dRedu3 = 0.0;
  m_fVX = m_fVY = m_fVZ = 0.0F;
  m_pParent = nullptr;
}

short int ZuPoint::SetAsControlFlag(int n) {
  char szDigits[16];  // eleven characters are the most an int has
  std::snprintf(szDigits, sizeof(szDigits), "%d", n);
  return SetAsControlFlag(szDigits);
}

short int ZuPoint::SetAsControlFlag(const char* szCode) {
  return SetControlFromText(szCode != nullptr ? szCode : "");
}

short int ZuPoint::SetControlFromText(std::string_view text) {
  static constexpr const char* kAxes[] = {"1Xx", "2Yy", "3Zz"};
  m_sControl = 0;
  for (int i = 0; i < 3; ++i) {
    if (text.find_first_of(kAxes[i]) != std::string_view::npos) {
      m_sControl = static_cast<short int>(m_sControl | 1 << i);
    }
  }
  return m_sControl;
}

const char* ZuPoint::GetControlCodeAs123(int iCode) {
  static constexpr const char* kTexts[] = {"  0", "  1", "  2", " 12", "  3", " 13", " 23", "123"};
  return kTexts[iCode & 7];
}

const char* ZuPoint::GetControlCodeAsXYZ(int iCode) {
  static constexpr const char* kTexts[] = {" N ", "X  ", " Y ", "XY ", "  Z", "X Z", " YZ", "XYZ"};
  return kTexts[iCode & 7];
}

double ZuPoint::Distance(const ZuPoint& other) const { return std::sqrt(DistanceSq(other)); }

double ZuPoint::DistanceSq(const ZuPoint& other) const {
  const double dx = m_dX - other.m_dX;
  const double dy = m_dY - other.m_dY;
  const double dz = m_dZ - other.m_dZ;
  return dx * dx + dy * dy + dz * dz;
}

ZuPoint ZuPoint::operator+(const ZuPoint& other) const {
  ZuPoint sum(*this);
  sum.m_dX += other.m_dX;
  sum.m_dY += other.m_dY;
  sum.m_dZ += other.m_dZ;
  sum.m_dDX += other.m_dDX;
  sum.m_dDY += other.m_dDY;
  sum.m_dDZ += other.m_dDZ;
  return sum;
}

ZuPoint ZuPoint::operator-(const ZuPoint& other) const {
  ZuPoint difference(*this);
  difference.m_dX -= other.m_dX;
  difference.m_dY -= other.m_dY;
  difference.m_dZ -= other.m_dZ;
  difference.m_dDX -= other.m_dDX;
  difference.m_dDY -= other.m_dDY;
  difference.m_dDZ -= other.m_dDZ;
  return difference;
}

ZuPoint ZuPoint::operator%(const ZuPoint& other) const {
  ZuPoint middle(*this + other);
  for (double* pd :
       {&middle.m_dX, &middle.m_dY, &middle.m_dZ, &middle.m_dDX, &middle.m_dDY, &middle.m_dDZ}) {
    *pd *= 0.5;
  }
  return middle;
}

ZuPoint ZuPoint::operator*(double dFactor) const {
  ZuPoint product(*this);
  MultiplyZuPoint(&product, dFactor);
  return product;
}

ZuPoint ZuPoint::operator/(double dDivisor) const {
  ZuPoint quotient(*this);
  quotient.m_dX /= dDivisor;
  quotient.m_dY /= dDivisor;
  quotient.m_dZ /= dDivisor;
  return quotient;
}

ZuPoint* ZuPoint::First(int iMask) { return zu::internal::FlagFirst(this, iMask); }

const ZuPoint* ZuPoint::First(int iMask) const { return const_cast<ZuPoint*>(this)->First(iMask); }

ZuPoint* ZuPoint::Next(int iMask) const {
  return zu::internal::FlagNext(const_cast<ZuPoint*>(this), iMask);
}

ZuPoint* ZuPoint::Previous(int iMask) const {
  return zu::internal::FlagPrevious(const_cast<ZuPoint*>(this), iMask);
}

void ZuPoint::DbgPrintf(const char* szTitle) const {
  // A debug line is one call: sinks take it whole.
  if (szTitle != nullptr) {
    dbgprintf("%s: %d-%s %s %.4f %.4f %.4f  %.4f %.4f %.4f ", szTitle, static_cast<int>(m_uId),
              m_strName.chars(), GetControlFlagsAsXYZ(), m_dX, m_dY, m_dZ, m_dDX, m_dDY, m_dDZ);
  } else {
    dbgprintf("%d-%s %s %.4f %.4f %.4f  %.4f %.4f %.4f ", static_cast<int>(m_uId),
              m_strName.chars(), GetControlFlagsAsXYZ(), m_dX, m_dY, m_dZ, m_dDX, m_dDY, m_dDZ);
  }
}
