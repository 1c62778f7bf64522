// Numbers as text files hold them: decimal, with a point, without groups and plus signs, whatever
// locale, base, notation and fill the application has given its stream.
#pragma once

#include <locale>
#include <ostream>

namespace zu::internal {

// Sets the classic locale and the plain form of numbers of a stream for its lifetime. Width,
// precision and the side of columns are the writers' own.
class ClassicStream {
 public:
  explicit ClassicStream(std::ostream& stream) : m_stream(stream), m_former(stream.getloc()) {
    m_bSet = m_former != std::locale::classic();
    if (m_bSet) m_stream.imbue(std::locale::classic());
    m_flags = m_stream.setf(std::ios_base::dec, kNumberFlags);
    m_cFill = m_stream.fill(' ');
  }
  ~ClassicStream() {
    m_stream.fill(m_cFill);
    m_stream.setf(m_flags & kNumberFlags, kNumberFlags);
    if (m_bSet) m_stream.imbue(m_former);
  }
  ClassicStream(const ClassicStream&) = delete;
  ClassicStream& operator=(const ClassicStream&) = delete;

 private:
  static constexpr std::ios_base::fmtflags kNumberFlags =
      std::ios_base::basefield | std::ios_base::floatfield | std::ios_base::showbase |
      std::ios_base::showpoint | std::ios_base::showpos | std::ios_base::uppercase;

  std::ostream& m_stream;
  const std::locale m_former;
  std::ios_base::fmtflags m_flags;
  char m_cFill;
  bool m_bSet;
};

}  // namespace zu::internal
