// The lines of a text file, one after the other.
#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string_view>

#include "zu/foundation/internal/build_size.h"

// Gives lines without their line end and the carriage returns before it, each up to its first NUL
// byte. A byte order mark at the start is passed over. A line above kMaxLine bytes is given in
// pieces of that length. Text that a read error cuts is dropped. Memory is one block, whatever the
// file holds.
class ZuLineReader {
 public:
  static constexpr std::size_t kMaxLine = 1999;

  explicit ZuLineReader(FILE* pFile) : m_pFile(pFile), m_pBlock(new char[kBlock]) {}

  // The next line, valid until the next call; false at the end of the file.
  bool Next(std::string_view* pLine);
  // The line given last is a piece of a longer one.
  bool IsPiece() const { return m_bPiece; }
  // And further pieces of it follow.
  bool HasMorePieces() const { return m_bMorePieces; }
  // The line given last has a line end, and a carriage return before it.
  bool HasEnd() const { return m_bEnds; }
  bool HasCarriageReturn() const { return m_bCarriageReturn; }
  // The file starts with a byte order mark.
  bool HasByteOrderMark() const { return m_bByteOrderMark; }

 private:
  static constexpr std::size_t kBlock = ZuBuildSize(65536, 2048);  // above kMaxLine

  void FillBlock();

  FILE* m_pFile;
  std::unique_ptr<char[]> m_pBlock;
  std::size_t m_uNext = 0;  // first byte not given
  std::size_t m_uEnd = 0;   // end of the bytes read
  bool m_bStart = true;
  bool m_bEnd = false;  // nothing more comes from the file
  bool m_bPiece = false;
  bool m_bMorePieces = false;
  bool m_bEnds = false;
  bool m_bCarriageReturn = false;
  bool m_bByteOrderMark = false;
};

struct ZuFileCloser {
  void operator()(FILE* pFile) const { std::fclose(pFile); }
};
using ZuOpenFile = std::unique_ptr<FILE, ZuFileCloser>;

// Opens a text file for reading; null if that fails, for a null path too.
ZuOpenFile ZuOpenText(const char* szPath);
