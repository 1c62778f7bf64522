// A measured or computed point: an object space coordinate or an image measurement, with
// accuracies, residuals, a control code and the ids of its photo and camera.
//
// Control codes are bits: 1 X, 2 Y, 4 Z. Their texts are told by digits ("123") or letters ("XYZ").
#pragma once

#include <iosfwd>
#include <string_view>

#include "zu/export.h"
#include "zu/foundation/listnode.h"
#include "zu/points/flag.h"
#include "zu/points/format_table.h"

class ZuFieldCutter;
class ZuReaderObject;
class ZuRowWriter;
class ZuVector;
struct ZuColumn;

class ZU_API ZuPoint : public ZuListnode, public ZuFlag {
 public:
  ZuPoint() = default;
  ZuPoint(const ZuPoint& other) = default;
  ZuPoint(unsigned int uId, double x, double y, double z = 0.0, short int sControl = 0);
  // Reads itself as Read does; the parser's exception passes.
  ZuPoint(ZuReaderObject* pObject, const TZuFormatTable<eZuPointRWMask>& table);
  ~ZuPoint() override = default;

  // Takes all fields, Id, name and flags; the place in a list stays.
  ZuPoint& operator=(const ZuPoint& other) = default;

  // (m_iPhoto + Id) of this point minus that of the other, formed without overflow in 32 bits:
  // lists of points sort ascending on that sum. pOther must be a ZuPoint.
  //
  // Required: the sense is the reverse of ZuListnode::Compare, whose lists sort descending. That
  // one answers for a pointer to const, and for an id: ask with the pointer that lists hold.
  using ZuListnode::Compare;
  virtual int Compare(ZuListnode* pOther) const;

  // Sets all fields declared below to 0; Id, name and flags stay.
  void init();

  // Reads the fields of a line into the columns of the table, fields beyond the table are left.
  // Blank, tab, ';' and ',' separate; a field that starts with '"' runs to the next '"' or the
  // end. Text that is no number gives 0. Returns the number of fields taken. The line is not
  // changed and needs no line end; a line end at its end belongs to no field.
  int Read(char* szLine, const TZuFormatTable<eZuPointRWMask>& table);
  int Read(const char* szLine, const TZuFormatTable<eZuPointRWMask>& table);

  // Reads one value for each column through the parser, from the token in hand on, and leaves the
  // first token behind them in hand. A token of the wrong type leaves as the parser's exception;
  // the fields read before it keep their new values. Returns 1.
  using ZuListnode::Read;
  int Read(ZuReaderObject* pObject, const TZuFormatTable<eZuPointRWMask>& table);

  // Writes the columns of the table, each behind one blank, nothing after the last. The precision
  // of the stream is 16 afterwards.
  using ZuListnode::Write;
  std::ostream& Write(std::ostream& os, const TZuFormatTable<eZuPointRWMask>& table) const;
  // Writes the columns so that the Read of keyword files takes them to the last bit: values apart
  // by one blank, names in quotes, control codes as a number. Columns that Read drops hold 0.
  std::ostream& Export(std::ostream& os, const TZuFormatTable<eZuPointRWMask>& table) const;

  // Sets the control code from the digits 1, 2, 3 of n, and of a text, where X, Y, Z and x, y, z
  // mean the same. Each returns the new code.
  short int SetAsControlFlag(int n);
  short int SetAsControlFlag(const char* szCode);
  short int GetControlFlags() const { return m_sControl; }
  void SetControlFlags(short int sControl) { m_sControl = sControl; }
  // The bit's value, 0 if it isn't set.
  int IsXControlPoint() const { return m_sControl & 1; }
  int IsYControlPoint() const { return m_sControl & 2; }
  int IsZControlPoint() const { return m_sControl & 4; }

  // Three characters for the three low bits of the code, as " 12" and "XY ".
  const char* GetControlFlagsAs123() const { return GetControlCodeAs123(m_sControl); }
  const char* GetControlFlagsAsXYZ() const { return GetControlCodeAsXYZ(m_sControl); }
  static const char* GetControlCodeAs123(int iCode);
  static const char* GetControlCodeAsXYZ(int iCode);

  double Distance(const ZuPoint& other) const;
  double Distance(const ZuPoint* pOther) const { return Distance(*pOther); }
  double DistanceSq(const ZuPoint& other) const;
  double DistanceSq(const ZuPoint* pOther) const { return DistanceSq(*pOther); }

  // (x, y, z) as a vector of three elements.
  ZuVector GetAsVector() const;

  // Required: exact equality of the coordinates, and of nothing else; callers that mean the same
  // record compare ids.
  bool operator==(const ZuPoint& other) const {
    return m_dX == other.m_dX && m_dY == other.m_dY && m_dZ == other.m_dZ;
  }
  // Sum, difference and midpoint act on coordinate and accuracies of a copy of this point, the
  // products on its coordinate alone.
  ZuPoint operator+(const ZuPoint& other) const;
  ZuPoint operator-(const ZuPoint& other) const;
  ZuPoint operator%(const ZuPoint& other) const;
  ZuPoint operator*(double dFactor) const;
  ZuPoint operator/(double dDivisor) const;

  // One line through dbgprintf; a null title is left out.
  void DbgPrintf(const char* szTitle) const;

  ZuPoint* Next() const { return static_cast<ZuPoint*>(m_pNext); }
  ZuPoint* Previous() const { return static_cast<ZuPoint*>(m_pPrev); }

  // Walk over the points of a list with any flag bit of iMask: First from this point on, the others
  // from its neighbour; null at the end.
  ZuPoint* First(int iMask);
  const ZuPoint* First(int iMask) const;
  ZuPoint* Next(int iMask) const;
  ZuPoint* Previous(int iMask) const;

 public:
  int m_iPhoto = 0;          // Id of the photo; part of the sort key
  int m_iCamera = 0;         // Id of the camera
  short int m_sControl = 0;  // control code bits
  int m_iUser = 0;           // copied along; no file column
  double m_dX = 0.0, m_dY = 0.0, m_dZ = 0.0;
  double m_dDX = 0.0, m_dDY = 0.0, m_dDZ = 0.0;           // accuracies
  double m_dRedu1 = 0.0, m_dRedu2 = 0.0, m_dRedu3 = 0.0;  // residuals
  float m_fVX = 0.0F, m_fVY = 0.0F, m_fVZ = 0.0F;         // a direction
  short int m_sUser = 0;                                  // copied along; no file column
  short int m_snImo = 0;                                  // number of image measurements
  int m_iColor = 0;
  ZuObject* m_pParent = nullptr;  // the record the point belongs to; copied along, not owned

 private:
  friend class ZuPointList;

  // As Read, on a line without line end; the columns end with null.
  int ReadLine(std::string_view line, const ZuColumn* const* ppColumn);
  void ReadField(ZuFieldCutter& fields, const ZuColumn& column);
  // Takes digits as the Id; anything else, and a zero if told so, as a name that gives the Id.
  void SetIdOrName(std::string_view text, bool bZeroIsName);
  void SetNameAndId(std::string_view text);
  short int SetControlFromText(std::string_view text);
  void ReadValue(ZuReaderObject* pObject, const ZuColumn& column);
  void ExportColumn(std::ostream& os, const ZuColumn& column) const;
  void WriteColumns(ZuRowWriter& row, const TZuFormatTable<eZuPointRWMask>& table) const;
};
