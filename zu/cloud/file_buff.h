// Read-only view of a whole file, with a position: the reading buffer of cloud files.
//
// The view is of the file as it was when it was opened; sizes and positions have 64 bits. Where the
// system keeps a mapped file from being shortened, the file is mapped whole and its handle closed
// at once. Elsewhere the view is a window of 256 KiB that follows the position: on POSIX systems
// anybody may shorten a file under a mapping, and the next look at the lost pages would end the
// process by SIGBUS. Through the window such a file simply ends earlier. It costs no time: filling
// the window, which stays in the processor's cache, takes as long as faulting in the pages of a
// mapping; and the pages of the file never count as the process's own memory.
//
// One thread at a time. The destructor gives back the view and the file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "zu/export.h"

// The values are given out by GetError: append, never renumber.
enum eZuFileBuffError : int {
  eZuFileBuffGood,     // open
  eZuFileBuffNotOpen,  // the file could not be opened
  eZuFileBuffEmpty,    // the size is zero
};

class ZU_API ZuFileBuff {
 public:
  // Opens a file for reading; see GetError. Both forms take UTF-8 on systems with byte paths.
  explicit ZuFileBuff(const char* szPath);
  explicit ZuFileBuff(const wchar_t* szPath);
  ~ZuFileBuff();

  ZuFileBuff(const ZuFileBuff&) = delete;
  ZuFileBuff& operator=(const ZuFileBuff&) = delete;

  int GetError() const { return m_iError; }  // one of eZuFileBuffError
  std::uint64_t GetSize() const { return m_uSize; }
  std::uint64_t GetPosition() const { return m_uPos; }
  std::uint64_t GetRest() const { return m_uEnd - m_uPos; }  // bytes from the position to the end
  bool IsEnd() const { return m_uPos >= m_uEnd; }

  // Copies the next uSize bytes to the target and moves on. Returns how many bytes the file had.
  //
  // Required: a read that starts at or beyond the end leaves the target unchanged; of an item that
  // straddles the end the bytes that exist are copied and the rest is filled with zeros.
  std::size_t Read(void* pTarget, std::size_t uSize);

  // The next little-endian word; 0 at or beyond the end.
  std::uint32_t ReadWord();

  // Up to uWant bytes from the position on in one piece, without moving; *puHave says how many
  // there are, fewer than wanted only at the end of the file, possibly more. uWant is at most
  // 4,096. The pointer is good until the next call.
  const unsigned char* Peek(std::size_t uWant, std::size_t* puHave);

  // Moves on by uSize bytes, at most to the end.
  void Skip(std::uint64_t uSize);

 protected:
  void Open();                                       // the view of the file just opened
  const unsigned char* Refill(std::size_t* puHave);  // moves the window to the position
  void Close();

  std::intptr_t m_hFile = -1;              // -1 when closed
  std::intptr_t m_hMapping = -1;           // -1 when there is none
  const unsigned char* m_pBase = nullptr;  // the view's base: the bytes from m_uBase on
  std::uint64_t m_uBase = 0;               // position in the file of the view's first byte
  std::uint64_t m_uBaseSize = 0;           // bytes in view
  std::uint64_t m_uPos = 0;
  std::uint64_t m_uEnd = 0;
  std::uint64_t m_uSize = 0;
  int m_iError = eZuFileBuffGood;
  std::unique_ptr<unsigned char[]> m_spWindow;  // the window; none while the file is mapped whole
};

// In line: one comparison for each block of records.
inline const unsigned char* ZuFileBuff::Peek(std::size_t uWant, std::size_t* puHave) {
  const std::uint64_t uSeen = m_uPos - m_uBase;
  if (uSeen + uWant > m_uBaseSize) return Refill(puHave);
  *puHave = static_cast<std::size_t>(m_uBaseSize - uSeen);
  return m_pBase + uSeen;
}
