// A stream buffer over text in memory, which it does not copy and which must outlive it.
#pragma once

#include <streambuf>
#include <string_view>

namespace zu::internal {

class TextBuffer : public std::streambuf {
 public:
  explicit TextBuffer(std::string_view text) {
    char* const pBegin = const_cast<char*>(text.data());  // read only: nothing is put back changed
    setg(pBegin, pBegin, pBegin + text.size());
  }
};

}  // namespace zu::internal
