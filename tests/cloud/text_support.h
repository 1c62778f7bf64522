// Random lines of numbers, plain and odd, as text files of other people hold them.
#pragma once

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

// The low byte of what atoi gives where it saturates.
inline std::uint32_t SaturatedByte(const std::string& strText) {
  const long long iValue = std::strtoll(strText.c_str(), nullptr, 10);
  return static_cast<std::uint32_t>(std::clamp<long long>(iValue, INT_MIN, INT_MAX)) & 0xFFu;
}

class TextMaker {
 public:
  explicit TextMaker(unsigned int uSeed) : m_random(uSeed) {}

  std::string Token() {
    static const std::vector<std::string> odd = Words(
        "+5 -.5 . - --1 1e3 1E-400 nan -inf 0x1p3 12abc abc 1,5 1.5.5 \v7 1\f2 "
        "00007 -0 1. .25 4e 300 -1 4294967297 2147483648 "
        "99999999999999999999999 0.1234567890123456789 9007199254740993 "
        "9007199254740992 1e22 123456789012345678 0.000000000000000000000001 "
        "vertex \"q\" 1999.9999 255.9999999999999999");
    switch (m_random() % 8) {
      case 0:
        return odd[m_random() % odd.size()];
      case 1:
      case 2:
        return std::to_string(m_random() % 256);
      default: {
        std::string strText = m_random() % 3 ? "" : "-";
        for (auto n = m_random() % 8; n > 0; --n) strText += Digit();
        strText += Digit();
        if (m_random() % 4) {
          strText += '.';
          for (auto n = m_random() % 12; n > 0; --n) strText += Digit();
        }
        return strText;
      }
    }
  }

  // Mostly up to uTokens tokens with one delimiter between; line ends of both kinds, sometimes a
  // NUL.
  std::string Line(const std::string& strDelimiters, std::size_t uTokens) {
    std::string strLine;
    const auto delimiters = [&](unsigned int uMost) {
      for (auto n = 1 + m_random() % uMost; n > 0; --n) {
        strLine += strDelimiters[m_random() % 4 ? 0 : m_random() % strDelimiters.size()];
      }
    };
    if (m_random() % 8 == 0) delimiters(3);
    const std::size_t uCount = m_random() % 10 ? m_random() % (uTokens + 1) : m_random() % 40;
    for (std::size_t i = 0; i < uCount; ++i) {
      if (i > 0) delimiters(m_random() % 4 ? 1 : 3);
      strLine += Token();
    }
    if (m_random() % 8 == 0) delimiters(3);
    if (m_random() % 40 == 0 && !strLine.empty()) strLine[m_random() % strLine.size()] = '\0';
    if (m_random() % 3 == 0) strLine += '\r';
    return strLine + '\n';
  }

  // A line of this many bytes, its end included.
  std::string LongLine(const std::string& strDelimiters, std::size_t uBytes) {
    std::string strLine;
    while (strLine.size() < uBytes) strLine += Token() + strDelimiters;
    strLine.resize(uBytes - 1);
    return strLine + '\n';
  }

 private:
  static std::vector<std::string> Words(const std::string& strText) {
    std::vector<std::string> words;
    for (std::size_t u = 0, uEnd; u <= strText.size(); u = uEnd + 1) {
      uEnd = std::min(strText.find(' ', u), strText.size());
      words.push_back(strText.substr(u, uEnd - u));
    }
    return words;
  }
  char Digit() { return static_cast<char>('0' + m_random() % 10); }

  std::mt19937 m_random;
};
