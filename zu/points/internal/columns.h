// What each column of a point table holds and how it is laid out: one table for titles, for both
// forms of reading and for writing.
#pragma once

#include "zu/points/format_table.h"
#include "zu/points/point.h"

enum class eZuColumnKind {
  Nothing,   // unknown column: no title, reads and writes nothing
  Id,        //
  Name,      //
  IdName,    // Id, or a name from which an Id is made; written by no one
  Flag,      //
  Code,      // control code by its digits
  Short,     // the fields of pShort, pInt, pDouble, pFloat
  Int,       //
  Key,       // the id of another record, in pInt; its text is one of 32 bits without a sign
  Double,    //
  Float,     //
  Accuracy,  // root of the sum of the squared accuracies; read and dropped
  Number,    // read and dropped; written as the blanks of its width
  Blank,     // not read; written as the blanks of its width
  Skip       // one token of keyword files is passed over
};

struct ZuColumn {
  eZuPointRWMask eColumn = eZuPointRWEnd;
  const char* szTitle = nullptr;  // null: none
  int iTitleWidth = 0;            // a blank stands before the width, here and below
  eZuColumnKind eKind = eZuColumnKind::Nothing;
  int iWidth = 0;
  short int ZuPoint::*pShort = nullptr;
  int ZuPoint::*pInt = nullptr;
  double ZuPoint::*pDouble = nullptr;
  float ZuPoint::*pFloat = nullptr;

  constexpr ZuColumn() = default;
  constexpr ZuColumn(eZuPointRWMask e, const char* sz, int iTitle, eZuColumnKind k, int iW)
      : eColumn(e), szTitle(sz), iTitleWidth(iTitle), eKind(k), iWidth(iW) {}
  constexpr ZuColumn(eZuPointRWMask e, const char* sz, int iTitle, short int ZuPoint::*p, int iW)
      : ZuColumn(e, sz, iTitle, eZuColumnKind::Short, iW) {
    pShort = p;
  }
  constexpr ZuColumn(eZuPointRWMask e, const char* sz, int iTitle, int ZuPoint::*p, int iW,
                     eZuColumnKind k = eZuColumnKind::Int)
      : ZuColumn(e, sz, iTitle, k, iW) {
    pInt = p;
  }
  constexpr ZuColumn(eZuPointRWMask e, const char* sz, int iTitle, double ZuPoint::*p, int iW)
      : ZuColumn(e, sz, iTitle, eZuColumnKind::Double, iW) {
    pDouble = p;
  }
  constexpr ZuColumn(eZuPointRWMask e, const char* sz, int iTitle, float ZuPoint::*p, int iW)
      : ZuColumn(e, sz, iTitle, eZuColumnKind::Float, iW) {
    pFloat = p;
  }
};

// The column of an id; one of kind Nothing for an id that is none.
const ZuColumn& ZuFindColumn(eZuPointRWMask eColumn);
