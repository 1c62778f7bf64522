// Stream manipulators for keyword files: blocks with indentation, and columns of values.
//
//   stream << s12 << "CAMERA" << ZuBeginBlockNL << "C" << w12 << 35.127 << ZuEndBlockNL << Zuendl;
//
// The indent level is one for the whole process, not one for each stream: one file is written at a
// time, and its writer starts with a ZuWriterStart or calls ZuWriterReset(). Numbers follow the
// stream's locale; writers of files imbue the classic one.
#pragma once

#include <iosfwd>

#include "zu/export.h"

ZU_API void ZuWriterReset();  // indent level 0

// Writes at level 0 for its lifetime; then the level of whoever was writing before comes back.
class ZU_API ZuWriterStart {
 public:
  ZuWriterStart();
  ~ZuWriterStart();
  ZuWriterStart(ZuWriterStart const&) = delete;
  ZuWriterStart& operator=(ZuWriterStart const&) = delete;

 private:
  int m_iFormer;
};

// Braces are written as items: a width that is set applies to them.
ZU_API std::ostream& ZuBeginBlock(std::ostream& stream);    // level +1, {
ZU_API std::ostream& ZuBeginBlockNL(std::ostream& stream);  // {, level +1, Zuendl
ZU_API std::ostream& ZuEndBlock(std::ostream& stream);      // level -1, never below 0, }
ZU_API std::ostream& ZuEndBlockNL(std::ostream& stream);    // level -1, never below 0, Zuendl, }
ZU_API std::ostream& ZuTabPlus(std::ostream& stream);       // level +1
ZU_API std::ostream& ZuTabMinus(std::ostream& stream);      // level -1, never below 0
ZU_API std::ostream& ZuComment(std::ostream& stream);       // "; "
ZU_API std::ostream& Zuendl(std::ostream& stream);          // line end, then 4 blanks a level

// A column aligned to the right: writes one blank, then sets the width of the next item.
ZU_API std::ostream& w4(std::ostream& stream);
ZU_API std::ostream& w5(std::ostream& stream);
ZU_API std::ostream& w6(std::ostream& stream);
ZU_API std::ostream& w8(std::ostream& stream);
ZU_API std::ostream& w10(std::ostream& stream);
ZU_API std::ostream& w12(std::ostream& stream);
ZU_API std::ostream& w14(std::ostream& stream);
ZU_API std::ostream& w16(std::ostream& stream);
ZU_API std::ostream& w19(std::ostream& stream);

// A column aligned to the left: sets the width of the next item, no blank.
ZU_API std::ostream& s2(std::ostream& stream);
ZU_API std::ostream& s4(std::ostream& stream);
ZU_API std::ostream& s8(std::ostream& stream);
ZU_API std::ostream& s10(std::ostream& stream);
ZU_API std::ostream& s12(std::ostream& stream);
ZU_API std::ostream& s14(std::ostream& stream);
ZU_API std::ostream& s16(std::ostream& stream);
ZU_API std::ostream& s20(std::ostream& stream);
ZU_API std::ostream& s30(std::ostream& stream);
ZU_API std::ostream& s34(std::ostream& stream);

// Significant digits of the numbers that follow.
ZU_API std::ostream& p4(std::ostream& stream);
ZU_API std::ostream& p6(std::ostream& stream);
ZU_API std::ostream& p8(std::ostream& stream);
ZU_API std::ostream& p16(std::ostream& stream);
