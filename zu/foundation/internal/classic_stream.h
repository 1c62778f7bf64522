// Numbers with a point and without groups, whatever locale the application has given its stream.
#pragma once

#include <locale>
#include <ostream>

namespace zu_internal {

// Sets the classic locale of a stream for its lifetime.
class ClassicStream {
 public:
  explicit ClassicStream(std::ostream& stream) : m_stream(stream), m_former(stream.getloc()) {
    m_bSet = m_former != std::locale::classic();
    if (m_bSet) m_stream.imbue(std::locale::classic());
  }
  ~ClassicStream() {
    if (m_bSet) m_stream.imbue(m_former);
  }
  ClassicStream(const ClassicStream&) = delete;
  ClassicStream& operator=(const ClassicStream&) = delete;

 private:
  std::ostream& m_stream;
  const std::locale m_former;
  bool m_bSet;
};

}  // namespace zu_internal
