// The fields of a line of text.
#pragma once

#include <string_view>

// Cuts a line into fields: runs of blank, tab, ';' and ',' separate; a field that starts with '"'
// is what stands up to the next '"' or the end of the line, blanks and all.
class ZuFieldCutter {
 public:
  explicit ZuFieldCutter(std::string_view line)
      : m_pNext(line.data()), m_pEnd(line.data() + line.size()) {}

  static bool IsDelimiter(char c) { return c == ' ' || c == '\t' || c == ';' || c == ','; }

  // Goes to the start of the next field; false at the end of the line.
  bool FindField() {
    while (m_pNext != m_pEnd && IsDelimiter(*m_pNext)) ++m_pNext;
    return m_pNext != m_pEnd;
  }

  // Those below take the field that FindField found.
  std::string_view Text();
  double Double();
  int Int();
  unsigned int Id();

 private:
  // Takes a field of at most nine digits; false, and nothing taken, for any other.
  inline bool ShortInt(int* piValue);

  const char* m_pNext;
  const char* m_pEnd;
};
