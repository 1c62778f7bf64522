// Rows of values in fixed columns, collected in a buffer on their way to a stream.
#pragma once

#include <cstddef>
#include <memory>
#include <ostream>
#include <sstream>
#include <string_view>

// The text is what the stream's own operators give with precision 16, digit by digit, but with a
// decimal point in every locale. Layout that the caller has set (fixed, showpos, a fill character)
// holds. Flush at the end: the destructor drops what is left.
class ZuRowWriter {
 public:
  explicit ZuRowWriter(std::ostream& os);

  // A blank, then the value in a field of that width, right-aligned.
  void Number(int iValue, int iWidth);
  void Number(unsigned int uValue, int iWidth);
  void Number(double dValue, int iWidth);
  void Right(std::string_view text, int iWidth);
  // A blank, then the text between double quotes, left-aligned with the quotes counted.
  void Quoted(std::string_view text, int iWidth);
  // Just the text.
  void Text(std::string_view text);

  // Hands the buffer to the stream; false if the stream has failed.
  bool Flush();

 private:
  static constexpr std::size_t kSize = 32768;
  static constexpr std::size_t kRoom = 64;  // a blank and a padded number

  char* Room();
  void Fill(std::size_t n);
  template <class T>
  void OddNumber(T value, int iWidth);

  std::ostream& m_os;
  char m_cFill;
  // Set where the stream's flags change the form of numbers: it formats them itself.
  std::unique_ptr<std::ostringstream> m_pOdd;
  std::size_t m_uCount = 0;
  char m_acBuffer[kSize];
};
