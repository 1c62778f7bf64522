// Lines and words of a text file, with the place of each fault.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "zu/exchange/photo_exchange.h"

namespace zu::internal {

class TextScan {
 public:
  explicit TextScan(const ZuExchangeFile& file) : m_file(file), m_text(file.strText) {}

  // The next line without its end; false behind the last one.
  bool Next(std::string_view* pLine);
  // The next one that is neither empty nor a comment (#).
  bool NextFilled(std::string_view* pLine);
  // The next word, on whatever line it stands; empty at the end of the file. Not to be mixed with
  // Next.
  std::string_view Word();
  std::uint64_t Line() const { return m_uLine; }  // from 1, of what was given last

  // Throw ExchangeFault at the line given last.
  [[noreturn]] void Fail(const std::string& strText, const std::string& strRight) const;
  double Number(std::string_view word) const;
  std::uint64_t Whole(std::string_view word) const;  // from 0 to 2^64 - 1

 private:
  const ZuExchangeFile& m_file;
  std::string_view m_text, m_words;
  std::size_t m_uAt = 0;
  std::uint64_t m_uLine = 0;
};

// Parts between blanks and tabs. Takes the first off *pText; empty at its end.
std::string_view TakeWord(std::string_view* pText);

// Numbers as texts that read back to the same bits, each with a blank in front.
void AppendNumber(double d, std::string* pText);

}  // namespace zu::internal
