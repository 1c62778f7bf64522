// The rules of keyword files: which keywords a block has, and what values each takes.
#pragma once

#include <string_view>

#include "zu/project/keyword_block.h"

namespace zu::internal {

// The values of a keyword, one character each; blanks separate for the eye only:
//   u  id, a whole number from 1 to 4294967295      i  whole number of 32 bits
//   k  whole number of 32 bits that is the id of its block
//   n  number, finite                               t  "text"
//   ?  the value behind it may be missing
//   M33  a matrix: its rows and columns, then its elements        V3  a vector alike
//   F  plane transformation: type and coefficients                G  its older form
//   (unn)  any number of rows, each on a line of its own     [unn]  the same, of points told
//   elsewhere
//   *  anything; what begins as a number must be one
// A keyword's values may stand in braces or not. The keyword "" is a block without keyword; of
// several such rules the first is that of the first block, the last that of all further ones. The
// keyword "\"" is a text in front of the first block.
struct KeywordRule {
  const char* szKeyword;
  const char* szValues;                 // null for a block of keywords
  const KeywordRule* pBlock = nullptr;  // its rules; the last one has a null keyword
  bool bVital = false;  // misspelt, with a block, it is an error: all of the block would be lost
};

const KeywordRule* ProjectRules();
// CAMERA blocks, and { id c xh yh a1 a2 r0 "name" } blocks.
const KeywordRule* CameraFileRules();
// "comment" { x1 y1 x2 y2 } { x1 y1 x2 y2 } { id x y code } ...
const KeywordRule* ReseauRules();
// { "type" sub-id "comment" pixels-x pixels-y sensor-x sensor-y } ...
const KeywordRule* DigitalCameraRules();

// The rule of a keyword; null without.
const KeywordRule* FindRule(const KeywordRule* pRules, std::string_view keyword);

// The rule of a block without keyword that stands behind uBefore others; null without.
const KeywordRule* UnnamedRule(const KeywordRule* pRules, std::size_t uBefore);

// The rule that an unknown keyword is spelt nearly like: one letter off, two where it is long.
// Blocks may stand several times; other keywords that the block has are not meant. Null without.
const KeywordRule* NearestRule(const KeywordRule* pRules, const ZuKeywordBlock& block,
                               std::string_view written);

}  // namespace zu::internal
