// A reader of keywords over text in memory.
#pragma once

#include <istream>
#include <string>
#include <string_view>

#include "zu/foundation/finding.h"
#include "zu/foundation/reader.h"
#include "zu/project/internal/text_buffer.h"

namespace zu::internal {

// The text must outlive it.
class TextReader {
 public:
  explicit TextReader(std::string_view text) : m_buffer(text), m_reader("") {
    std::ios& stream = m_reader.GetStream();
    stream.rdbuf(&m_buffer);  // in place of the file
  }

  ZuReader* operator->() { return &m_reader; }
  ZuReader& operator*() { return m_reader; }

 private:
  TextBuffer m_buffer;
  ZuReader m_reader;
};

// From the place where the stream stands to its end; false where it cannot be read.
bool ReadWhole(std::istream& stream, std::string* pstrText);

// What is told of a file that cannot be read, and of a fault that a reader met.
ZuFinding NotReadable(const std::string& strFile);
ZuFinding ReaderFault(const std::string& strFile, unsigned uLine, eZuParserStatus eStatus);

}  // namespace zu::internal
