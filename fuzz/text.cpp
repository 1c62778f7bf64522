// Bytes as text, converted to wide characters and back and cut into lines, and as a program over
// Strings.
#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>

#include "fuzz/string_program.h"
#include "zu/foundation/unicode.h"

namespace {

// What came through once comes through again.
void CheckUnicode(std::string const& text) {
  const AnsiToUni wide(text);
  const UniToAnsi narrow(wide());
  const AnsiToUni again(narrow());
  Require((wide() == nullptr) == (again() == nullptr));
  if (wide()) Require(std::wstring_view(wide()) == again());
}

void CheckLines(std::string const& text) {
  std::istringstream stream(text);
  String line;
  std::size_t n = 0;
  while (!stream.eof()) n += static_cast<std::size_t>(readline(stream, line)) + 1;
  Require(n == text.size() + 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pData, std::size_t nSize) {
  const std::string text(reinterpret_cast<char const*>(pData), nSize);
  CheckUnicode(text);
  StringProgram(text).Run();
  CheckLines(text);
  return 0;
}
