#include "zu/project/internal/text_reader.h"

#include <sstream>

namespace zu::internal {

namespace {

const char* FaultText(eZuParserStatus eStatus) {
  switch (eStatus) {
    case ParserErrorStream:
      return "cannot be read on";
    case ParserErrorUnterminatedString:
      return "a text is not closed";
    case ParserErrorInvalidNumber:
      return "no number, or a matrix of the wrong shape";
    default:
      return "not what stands here";
  }
}

const char* FaultRight(eZuParserStatus eStatus) {
  switch (eStatus) {
    case ParserErrorStream:
      return "lines of at most 8511 characters";
    case ParserErrorUnterminatedString:
      return "\"text\" on one line";
    case ParserErrorInvalidNumber:
      return "3x3, 4x4 or 3 numbers";
    default:
      return "a keyword, a number or a \"text\" as the keyword needs it";
  }
}

}  // namespace

bool ReadWhole(std::istream& stream, std::string* pstrText) {
  std::ostringstream text;
  if (stream.good() && stream.peek() != std::istream::traits_type::eof()) text << stream.rdbuf();
  *pstrText = std::move(text).str();
  return !stream.bad() && (stream.eof() || !stream.fail());
}

ZuFinding NotReadable(const std::string& strFile) {
  return {strFile, 0, 0, eZuSeverityError, "", "cannot be read", "a file that can be read"};
}

ZuFinding ReaderFault(const std::string& strFile, unsigned uLine, eZuParserStatus eStatus) {
  return {strFile, uLine, 0, eZuSeverityError, "", FaultText(eStatus), FaultRight(eStatus)};
}

}  // namespace zu::internal
