// What a record writes by Export reads back: every field to the last bit, and the same text when it
// is written again.
#pragma once

#include <sstream>
#include <string>

#include "fuzz/input.h"
#include "tests/support/record_fields.h"

// Whether the reader of keyword files takes the lines of a text.
inline bool HasLinesToRead(std::string_view text) {
  constexpr std::size_t kLongestLine = 8511;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t uEnd = std::min(text.find('\n', i), text.size());
    if (uEnd - i > kLongestLine) return false;
    i = uEnd + 1;
  }
  return true;
}

template <class Record>
std::string BlockOf(const Record& record, std::ostream& (Record::*pfnWrite)(std::ostream&) const) {
  std::ostringstream os;
  os << "BLOCK {\n";
  (record.*pfnWrite)(os);
  os << "\n}\n";
  return os.str();
}

// `fields` tells what of a record is in its file; the record that is read starts as `empty`.
template <class Record, class Fields>
void CheckThereAndBack(const Record& record, Record empty, const Fields& fields,
                       std::ostream& (Record::*pfnWrite)(std::ostream&) const = &Record::Export,
                       int (Record::*pfnRead)(ZuReaderObject*) = &Record::Read) {
  const std::string strText = BlockOf(record, pfnWrite);
  if (!HasLinesToRead(strText)) return;
  ZuReaderObject keywords[] = {{"BLOCK", Link(&empty, pfnRead)}};
  ReadKeywords(Input::Path(strText), keywords, false);
  Require(fields(empty) == fields(record));
  Require(BlockOf(empty, pfnWrite) == strText);
}

template <class Record>
void CheckThereAndBack(const Record& record) {
  CheckThereAndBack(record, Record(), &FieldsOf<Record>);
}
