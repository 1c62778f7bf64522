// What a reader of text made of a file: the dialect it took it for, what it left out, limited or
// assumed, and what is wrong. Readers of coordinates and of clouds describe their work alike; they
// print nothing, they hand this out beside the points.
//
//   for (const ZuReadFinding& finding : findings) show(GetZuFindingLine(finding));
//   if (!findings.IsWhole()) ...  // points are missing
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "zu/export.h"
#include "zu/foundation/finding.h"

// How a reader meets a line that is no point. The findings are the same up to that line: its place,
// what is wrong with it and what would be right.
enum eZuReadMode : int {
  eZuReadStrict,   // it ends the reading, with a fault
  eZuReadTolerant  // it costs itself alone; numbers may have decimal commas throughout
};

// In order of weight. The values are given out: append, never renumber.
enum eZuReadKind : int {
  eZuReadNote,     // passed over as it may be: a comment, a title above the points
  eZuReadAssumed,  // the file leaves it open, the reader chose
  eZuReadDropped,  // something that the points cannot hold, or a line that is no point
  eZuReadClamped,  // a value outside its range, taken as the nearest one inside
  eZuReadCut,      // less than the file announces: cut or damaged; what is complete is there
  eZuReadFault     // not readable from here on; what stands before is there
};

// Notes are notes, what was assumed, dropped or clamped is a warning, a cut or a fault an error.
struct ZuReadFinding : ZuFinding {
  eZuReadKind m_eKind = eZuReadNote;
};

enum eZuLineEnds : int { eZuLineEndsNone, eZuLineEndsLf, eZuLineEndsCrLf, eZuLineEndsMixed };

enum eZuDelimiter : int {
  eZuDelimiterNone,  // binary, or no point was read
  eZuDelimiterBlank,
  eZuDelimiterTab,
  eZuDelimiterComma,
  eZuDelimiterSemicolon,
  eZuDelimiterMixed  // more than one of them
};

// The form in which a text file was taken.
struct ZU_API ZuReadDialect {
  std::string m_strForm;     // "PTS", "PLY ascii", "coordinates"; empty: nothing was read
  std::string m_strHeader;   // what stands above the points: a count, a title; empty: nothing
  std::string m_strColumns;  // "x y z intensity"
  eZuDelimiter m_eDelimiter = eZuDelimiterNone;  // of the first point
  char m_cDecimal = '.';                         // or ','
  eZuLineEnds m_eLineEnds = eZuLineEndsNone;
  bool m_bByteOrderMark = false;

  // Notes how a line ends; a last line without an end is not noted.
  void AddLineEnd(bool bCarriageReturn) {
    const eZuLineEnds eEnd = bCarriageReturn ? eZuLineEndsCrLf : eZuLineEndsLf;
    if (m_eLineEnds == eEnd) return;
    m_eLineEnds = m_eLineEnds == eZuLineEndsNone ? eEnd : eZuLineEndsMixed;
  }
  // Notes what stands between the fields of a line; what one of them quotes does not count.
  void SetDelimiter(std::string_view line);
  // "PTS, columns x y z, between blanks, decimal point, line ends CR LF, byte order mark, header
  // \"3\"".
  std::string GetText() const;
};

class ZU_API ZuReadFindings {
 public:
  // Lines that are no points are told one by one up to this number, the others counted.
  static constexpr std::uint64_t MostLinesTold = 1000;

  void Add(eZuReadKind eKind, std::uint64_t uLine, std::uint64_t uColumn, std::string strText,
           std::string strRight = {}, std::string strKeyword = {});
  // A line, or a row, that a tolerant reader leaves out.
  void AddDroppedLine(std::uint64_t uLine, std::uint64_t uColumn, std::string strText,
                      std::string strRight, std::string strKeyword = {});
  // Tells how many of them were not told one by one. At the end of the reading.
  void EndDroppedLines();
  // A fault without a line: memory ended. Takes none itself if there is none.
  void AddMemoryEnded() noexcept;
  void Clear() { *this = ZuReadFindings(); }

  // The first of a kind, and the first of a severity or a higher one; null if there is none. Good
  // until the next change.
  const ZuReadFinding* First(eZuReadKind eKind) const;
  const ZuReadFinding* FirstOf(eZuSeverity eAtLeast) const;

  // Nothing is missing: no finding says that the file was cut or could not be read.
  bool IsWhole() const { return !m_bMemoryEnded && !First(eZuReadCut) && !First(eZuReadFault); }

  bool IsEmpty() const { return m_aFindings.empty() && !m_bMemoryEnded; }
  std::vector<ZuReadFinding>::const_iterator begin() const { return m_aFindings.begin(); }
  std::vector<ZuReadFinding>::const_iterator end() const { return m_aFindings.end(); }

 public:
  ZuReadDialect m_Dialect;
  std::uint64_t m_uDroppedLines = 0;   // that are no points, titles and comments not counted
  std::uint64_t m_uClampedValues = 0;  // intensities and colours

 private:
  std::vector<ZuReadFinding> m_aFindings;  // in the order in which they were met
  bool m_bMemoryEnded = false;
};
