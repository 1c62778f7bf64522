// A block of keywords as it stands in a file, beside the record that was read from it: where its
// keywords stand, and what no record holds.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "zu/export.h"

// Where a comment stands.
enum eZuCommentPlace : int {
  eZuCommentAbove,   // on a line of its own above what it belongs to
  eZuCommentBehind,  // at the end of its last line
  eZuCommentOpen,    // behind its {
  eZuCommentEnd      // on a line of its own above its }, or at the end of the file
};

// A comment, kept for writers. Blocks of keywords and unknown keywords hold their own; those of
// other keywords, and of the rows of lists, stand in the block that holds the keyword.
struct ZuFileComment {
  std::string m_strText;  // from its ; or ! to the end of the line
  eZuCommentPlace m_ePlace = eZuCommentAbove;
  std::string m_strKeyword;  // to which it belongs; empty: the block itself
  unsigned m_uNumber = 1;    // of those of this keyword in the block, from 1
  unsigned m_uRow = 0;       // of the list of rows, from 1; 0: the keyword itself
  unsigned m_uId = 0;        // of the row
};

// A keyword that the block does not know, with its value or block.
struct ZuUnknownKeyword {
  unsigned m_uLine = 0, m_uColumn = 0;  // from 1, in bytes
  std::string m_strWritten;             // the keyword, cut at 40 bytes
  std::string m_strMeant;               // a keyword that is missing and spelt nearly so; or empty
  // Keyword and value as they stand in the file, byte for byte and over as many lines: a writer
  // that puts this text into the block again loses nothing.
  std::string m_strText;
  std::string m_strAfter;  // the known keyword that stands before it in the block; empty: none
  std::vector<ZuFileComment> m_comments;  // above and behind it
};

// A row whose id stood before in the same list of rows.
struct ZuDoubledRow {
  unsigned m_uId = 0, m_uLine = 0, m_uFirstLine = 0, m_uColumn = 0;
};

struct ZuKeywordPlace {
  unsigned m_uLine = 0, m_uColumn = 0;  // from 1, in bytes
};

struct ZU_API ZuKeywordBlock {
  // Where a keyword stands first; 0 and 0 where it does not.
  ZuKeywordPlace PlaceOf(const std::string& strWanted) const;
  unsigned LineOf(const std::string& strWanted) const { return PlaceOf(strWanted).m_uLine; }
  bool Has(const std::string& strWanted) const { return LineOf(strWanted) != 0; }
  // The unknown keyword that was meant as this one; null without.
  const ZuUnknownKeyword* MeantAs(const std::string& strWanted) const;
  // The last inner block of that keyword; null without.
  const ZuKeywordBlock* Find(const std::string& strWanted) const;

  std::string m_strKeyword;
  unsigned m_uLine = 0, m_uColumn = 0;  // of its keyword
  unsigned m_uToken = 0;  // number of its keyword among the tokens of the file, from 1
  unsigned m_uId = 0;     // the first id among its values
  std::map<std::string, ZuKeywordPlace> m_keywords;  // known ones, where they stand first
  std::vector<ZuUnknownKeyword> m_unknown;           // in the order of the file
  std::vector<ZuFileComment> m_comments;             // in the order of the file
  std::vector<ZuKeywordBlock> m_blocks;  // inner blocks of keywords, in the order of the file
  std::vector<ZuKeywordPlace> m_rows;    // the whole rows of its POINTS
  std::vector<ZuDoubledRow> m_doubled;
  bool m_bCut = false;         // the file ends inside
  bool m_bLastRowCut = false;  // and perhaps inside the last number of its last row
};
