// The input of a fuzz target, as text and as a file.
//
// A plain file of samples/ is a good input of every target that reads files: what a target can
// choose beside the bytes, it derives from them.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "tests/support/temp_file.h"
#include "zu/foundation/reader.h"

// What a target holds to be true of any input.
inline void Require(bool bGood) {
  if (!bGood) std::abort();
}

class Input {
 public:
  Input(const std::uint8_t* pData, std::size_t uSize)
      : m_text(reinterpret_cast<const char*>(pData), uSize) {}

  std::string_view Text() const { return m_text; }

  // A file of the input, in the place of the one before.
  const char* Path() const { return Path(m_text); }
  static const char* Path(std::string_view text) {
    static const TempFile file;
    file.Write(text);
    return file.Path();
  }

  // A second file, for what is written.
  static const char* OutputPath() {
    static const TempFile file;
    return file.Path();
  }

  // The last byte. Text files end with a line end, which is an option like any other; a byte behind
  // it changes the option and little else.
  unsigned Option() const {
    return m_text.empty() ? 0U : static_cast<unsigned char>(m_text.back());
  }

  // True for one input in n: for what takes long.
  bool OneIn(unsigned n) const {
    std::uint32_t uHash = 2166136261U;  // FNV-1a, by G. Fowler, L. C. Noll, K.-P. Vo
    for (const char c : m_text) uHash = (uHash ^ static_cast<unsigned char>(c)) * 16777619U;
    return uHash % n == 0;
  }

 private:
  std::string_view m_text;
};

// Counts the faults of a reader, and goes on behind them.
struct FaultCounter : public LinkHdl {
  long Count(ZuReader*) {
    ++m_iFaults;
    return 1;
  }
  int m_iFaults = 0;
};

// Runs a reader with these keywords over a file. With bGoOn it goes on behind faults.
template <std::size_t N>
void ReadKeywords(const char* szPath, ZuReaderObject (&keywords)[N], bool bGoOn) {
  FaultCounter faults;
  ZuReader reader(szPath);
  if (bGoOn) reader.SetParserErrorHdl(Link(&faults, &FaultCounter::Count));
  for (ZuReaderObject& keyword : keywords) reader.RegisterObject(keyword);
  Require(reader.DoProcess(false) == 1);
}
