// Tables of point ids.
#pragma once

#include "zu/export.h"
#include "zu/foundation/array.h"
#include "zu/foundation/value_array2d.h"

class ZuReaderObject;

class ZU_API ZuIdPair {
 public:
  ZuIdPair(unsigned int uFirst, unsigned int uSecond) : m_uFirst(uFirst), m_uSecond(uSecond) {}
  ZuIdPair(const ZuIdPair&) = default;
  virtual ~ZuIdPair() = default;
  ZuIdPair& operator=(const ZuIdPair&) = default;

  bool operator==(const ZuIdPair& other) const {
    return m_uFirst == other.m_uFirst && m_uSecond == other.m_uSecond;
  }

  // By the first id, then by the second.
  bool operator<(const ZuIdPair& other) const {
    return m_uFirst != other.m_uFirst ? m_uFirst < other.m_uFirst : m_uSecond < other.m_uSecond;
  }
  bool operator<=(const ZuIdPair& other) const { return !(other < *this); }

  // Makes both ids 0.
  void Clear() { m_uFirst = m_uSecond = 0; }

  bool HasId(unsigned int uId) const { return m_uFirst == uId || m_uSecond == uId; }

  // The second id if uId is the first.
  //
  // Required: for every other id, one that the pair does not hold included, the first.
  unsigned int OtherId(unsigned int uId) const { return uId == m_uFirst ? m_uSecond : m_uFirst; }

  // Puts the smaller id first. True: the two were exchanged.
  bool Sort();

  unsigned int GetFirst() const { return m_uFirst; }
  unsigned int GetSecond() const { return m_uSecond; }

 protected:
  unsigned int m_uFirst;
  unsigned int m_uSecond;
};

class ZU_API ZuIdTable : public TZuArray<unsigned int> {
 public:
  using TZuArray<unsigned int>::TZuArray;

  // Appends the ids of a block such as { 17 4 205 }: integer tokens from the one in hand to the
  // brace that closes it, or to the end of the file. Any other token leaves as the parser's fault;
  // the ids before it stay. Returns 1.
  //
  // A table is no LinkHdl. The handler of the block's keyword, a function of the record that holds
  // the table, calls this.
  int Read(ZuReaderObject* pObject);
};

class ZU_API ZuIdPairTable : public TZuArray<ZuIdPair> {
 public:
  using TZuArray<ZuIdPair>::TZuArray;

  // { 17 4  205 206 } as ZuIdTable, two ids to a pair; a pair that is cut leaves no trace.
  int Read(ZuReaderObject* pObject);
};

// A grid of ids.
class ZU_API ZuIdTable2D {
 public:
  ZuIdTable2D() = default;
  ZuIdTable2D(int iSizeX, int iSizeY) : m_aIds(iSizeX, iSizeY) {}  // of zeros
  ZuIdTable2D(const ZuIdTable2D&) = default;
  virtual ~ZuIdTable2D() = default;
  ZuIdTable2D& operator=(const ZuIdTable2D&) = default;

  int GetSizeX() const { return m_aIds.GetSizeX(); }
  int GetSizeY() const { return m_aIds.GetSizeY(); }

  // x and y count from 0 and are not checked.
  unsigned int& operator()(int x, int y) { return m_aIds(x, y); }
  unsigned int operator()(int x, int y) const { return m_aIds(x, y); }

  // { 3 2  11 12 13  21 22 23 }: the sizes in x and y, then the ids row by row, x running fastest.
  //
  // The grid is replaced when its block has ended. Of a block with fewer ids than the sizes tell,
  // the complete rows are taken; what stands behind the last id is left to the reader. Sizes below
  // 1 give an empty grid. A token that is no integer leaves as the parser's fault, with the
  // complete rows before it taken. Returns 1.
  int Read(ZuReaderObject* pObject);

 protected:
  ValArray2DXY<unsigned int> m_aIds;
};

extern template class TZuArray<ZuIdPair>;
