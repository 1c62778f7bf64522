// A list of points with the columns of its files, and the coordinate file: a plain text table, one
// point to a line, without header and keywords.
//
// Reading and writing of files set the process-wide number locale for the time of the call: one
// thread at a time.
#pragma once

#include <cstdio>
#include <iosfwd>

#include "zu/export.h"
#include "zu/foundation/link.h"
#include "zu/foundation/list.h"
#include "zu/points/format_table.h"
#include "zu/points/point.h"

ZU_DECLARE_LIST(ZuPoint);

class ZU_API ZuPointList : public TZuListHeader<ZuPoint>,
                           public TZuFormatTable<eZuPointRWMask>,
                           public LinkHdl {
 public:
  // Empty, with an empty table or a copy of one.
  ZuPointList() = default;
  ZuPointList(const TZuFormatTable<eZuPointRWMask>& table);
  // Reads the file; an unreadable one leaves the list empty.
  ZuPointList(const String& strPath, const TZuFormatTable<eZuPointRWMask>& table);
  // Copies of the points, and the table; no observers.
  ZuPointList(const ZuPointList& other);
  ~ZuPointList() override = default;

  // Copies of the points, then the table. The form from another kind of list leaves the table.
  ZuPointList& operator=(const ZuPointList& other);
  using TZuListHeader<ZuPoint>::operator=;

  // The columns of rows and files.
  TZuFormatTable<eZuPointRWMask>& GetMask() { return *this; }
  const TZuFormatTable<eZuPointRWMask>& GetMask() const { return *this; }
  void SetMask(const TZuFormatTable<eZuPointRWMask>& table);
  using TZuFormatTable<eZuPointRWMask>::Size;  // number of columns
  using TZuFormatTable<eZuPointRWMask>::operator[];

  // Handler of a keyword block whose rows are points: adds a point for each row of values, until
  // the block's closing brace or the end of the file. A row cut short leaves no trace; any other
  // token that doesn't fit leaves as the parser's exception, and complete rows stay. Returns 1.
  int Read(ZuReaderObject* pObject);
  // Writes the points, a line end between them, none after the last. Returns the stream, its
  // failure state set where the write was not complete.
  std::ostream& Write(std::ostream& os) const;
  // Writes a row for each point so that Read takes it to the last bit, see ZuPoint::Export; by the
  // list's columns, or by others. A line end between rows, none after the last.
  std::ostream& Export(std::ostream& os) const { return Export(os, *this); }
  std::ostream& Export(std::ostream& os, const TZuFormatTable<eZuPointRWMask>& table) const;

  // Appends the points of a coordinate file, whose columns become the list's. A line without Id
  // (a comment, a title, an empty line) is dropped; text that is no number gives 0. Lines above
  // 1999 bytes are taken as several. Returns the count of the list, 0 if the file can't be opened.
  int ReadFile(const char* szPath, const TZuFormatTable<eZuPointRWMask>& table);
  int ReadFile(const wchar_t* wszPath, const TZuFormatTable<eZuPointRWMask>& table);

  // Writes a coordinate file, which is created or overwritten. Returns 1.
  //
  // Required: 1 also when nothing could be written. Who must know writes to a stream of his own.
  int WriteFile(const char* szPath) const;
  int WriteFile(const wchar_t* wszPath) const;
  // Required: the table stays the list's table afterwards.
  int WriteFile(const char* szPath, const TZuFormatTable<eZuPointRWMask>& table);
  int WriteFile(const wchar_t* wszPath, const TZuFormatTable<eZuPointRWMask>& table);

  // Appends the points of a GSI file of a total station (GSI-8 or GSI-16): word 11 is the point,
  // 81, 82 and 83 are the coordinates, in metres. A damaged line costs that line. Returns the
  // count of the list, 0 if the file can't be opened.
  int ReadGsiFile(const char* szPath);
  int ReadGsiFile(const wchar_t* wszPath);

  // The first point of that name.
  //
  // Required: case counts here, unlike in the lists of other records.
  ZuPoint* Find(const String& strName) const;
  // The first point with that Id and, if uPhoto is not 0, that photo. With a start point, which
  // must be in the list, the search runs forward from it, then backward from it. Null if none.
  ZuPoint* Find(unsigned int uId, unsigned int uPhoto, ZuPoint* pStart) const;
  using TZuListHeader<ZuPoint>::Find;
  // As Find, for a list ascending by Id: gives up at the first Id above uId.
  ZuPoint* FindInSortedList(unsigned int uId) const;
  // The first of the points with the smallest distance to p, which goes to *pdDistance unless that
  // is null. Null, and the distance untouched, if the list is empty.
  ZuPoint* FindNearest(const ZuPoint& p, double* pdDistance) const;

  // True if any point has a control code; the other form sets all codes to 0.
  bool HasControlPoints() const;
  void RemoveControlInformation();

  // All points, or their ids, through dbgprintf; a null title is left out.
  void DbgPrintf(const char* szTitle) const;
  void DbgPrintfId(const char* szTitle) const;
  void AssertDoubleId() const {}

 protected:
  // Reads to the end of an open file.
  int ReadFile(FILE* pFile, const TZuFormatTable<eZuPointRWMask>& table);
};
