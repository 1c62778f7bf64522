// The look at a line of a coordinate file before a point is made of it.
//
// A line is split by ';', by tabs or by commas, whichever it has (in this order), so that a name
// may hold blanks; where that does not fit the columns, by all of these and blanks. A name of
// several words between blanks is taken where the line fits in one way only.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "zu/foundation/number_text.h"
#include "zu/foundation/read_findings.h"
#include "zu/points/column_names.h"
#include "zu/points/internal/line_fields.h"

class ZuCoordinateRows {
 public:
  enum eRow {
    eRowNone,   // nothing, a comment, or a line that is left out
    eRowPoint,  // GetText has its fields
    eRowEnd     // the reading ends here
  };

  ZuCoordinateRows(const TZuFormatTable<eZuPointRWMask>& columns, ZuReadFindings& findings,
                   eZuReadMode eMode);

  // Takes the line of that number, from 1; bEnds: it has a line end.
  eRow Take(std::string_view line, std::uint64_t uLine, bool bEnds);
  // A line of so many bytes is longer than one may be.
  eRow TakeTooLong(std::uint64_t uBytes, std::uint64_t uLine, bool bEnds);

  // The fields of the point as ZuPoint::Read splits them right: between blanks, in quotes where
  // that is needed, with decimal points.
  const std::string& GetText() const { return m_strText; }

  // Reports what was counted, at the end of the file.
  void Finish();

 private:
  enum eJudgement { eNothing, ePoint, eTitle, eWrong };

  struct Counted {
    std::uint64_t uCount = 0, uLine = 0, uColumn = 0;
    void Add(std::uint64_t uAtLine, std::uint64_t uAtColumn) {
      if (uCount++ == 0) uLine = uAtLine, uColumn = uAtColumn;
    }
  };

  eJudgement Judge(std::string_view line);
  eJudgement Wrong(const char* pAt, int iColumn, ZuTextFault fault);
  eJudgement WrongFields(const ZuLineFields& fields);
  eJudgement WrongField(std::size_t i, std::string_view field);
  eJudgement Accept(const ZuLineFields& fields);

  bool Fits(const ZuLineFields& fields) const;
  bool FieldFits(std::size_t i, std::string_view field) const;
  bool NumberFits(std::string_view field) const;
  bool HasGap(const ZuLineFields& fields) const;
  bool IsTitle(const ZuLineFields& fields) const;
  bool IsHeader(const ZuLineFields& fields) const;
  bool TakeName(const ZuLineFields& words, ZuLineFields* pFields) const;
  bool TakeCommas(std::string_view line, ZuLineFields* pFields) const;
  // Those below are false, the line wrong, for the fault they look for.
  bool CheckDecimalComma(std::string_view line);
  bool CheckOneReading(const ZuLineFields& divided, const ZuLineFields& loose);
  bool CheckWords(bool bJoined, std::size_t uFields, const char* pAt);

  void NoteDecimal(std::string_view field);
  void NoteLimit(std::size_t i, std::string_view field);
  void AddTitle(std::string_view line);
  eRow Tell(bool bEnds);
  std::uint64_t ColumnOf(const char* pAt) const {
    return pAt != nullptr ? static_cast<std::uint64_t>(pAt - m_pLine) + 1 : 0;
  }
  eZuColumnText TextOf(std::size_t i) const { return m_texts[i]; }

  std::string m_strColumns;  // their names
  std::vector<eZuPointRWMask> m_columns;
  std::vector<eZuColumnText> m_texts;  // of each column
  int m_iNameColumn = -1;              // its index
  ZuReadFindings& m_findings;
  eZuReadMode m_eMode;
  char m_cDecimal;  // 0: no fraction was read yet
  std::string m_strText;
  ZuLineFields m_divided, m_loose, m_words;

  const char* m_pLine = nullptr;  // the line in hand
  std::uint64_t m_uLine = 0;      // its number
  std::uint64_t m_uPoints = 0;
  bool m_bHeader = false;  // a line of names without numbers stands above the points
  const char* m_pFault = nullptr;
  int m_iFaultColumn = -1;  // index of the column; -1: the line as a whole
  bool m_bShort = false;    // the line has too few fields
  ZuTextFault m_fault;

  Counted m_comments, m_titles, m_surplus, m_commas;
  Counted m_joined;  // lines with a name of several words between blanks
};
