// Text in blocks, for readers that take it line by line.
//
//   [Begin(), End()) is what has been read and not taken yet; a '\n' stands at End(), so that a
//   scan for a line end needs no other bound. A line that reaches End() while IsComplete() is
//   false is still to come: Refill and look again.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <utility>

#include "zu/foundation/internal/build_size.h"
#include "zu/foundation/progress.h"

template <class Input>  // std::size_t Read(char*, std::size_t): fewer than asked at the end only
class ZuLineSource {
 public:
  // Bytes; stays in the second-level cache, and is above the length at which readers cut a line.
  static constexpr std::size_t BlockSize = ZuBuildSize(256 * 1024, 2048);
  static constexpr std::size_t Slack = 16;  // readable bytes behind End()

  // uSize: how many bytes the input has, 0 if nobody knows.
  ZuLineSource(Input input, std::uint64_t uSize) : m_input(input), m_uSize(uSize) { Allocate(); }

  const char* Begin() const { return m_pBegin; }
  const char* End() const { return m_pEnd; }
  bool IsComplete() const { return m_bComplete; }
  void SetBegin(const char* p) { m_pBegin = std::min(p, static_cast<const char*>(m_pEnd)); }

  // Bytes that are left, as far as is known: a bound for what a count in the file can mean.
  std::uint64_t GetRest() const {
    const std::uint64_t uInHand = static_cast<std::uint64_t>(m_pEnd - m_pBegin);
    return uInHand + (m_uSize > m_uRead ? m_uSize - m_uRead : 0);
  }

  // Moves what is in hand to the front and reads behind it; a line longer than the buffer doubles
  // it. Pointers into the text are void then. False, and nothing read, when the progress handler
  // wants no more.
  bool Refill(ZuProgress& progress) {
    const auto nRead = static_cast<std::int64_t>(m_uRead);
    const auto nAll = m_uSize > 0 ? static_cast<std::int64_t>(m_uSize) : 2 * nRead;
    if (!progress.SetPosition(nRead, nAll)) return false;
    Fill();
    return true;
  }

 private:
  void Fill() {
    const std::size_t uInHand = static_cast<std::size_t>(m_pEnd - m_pBegin);
    if (uInHand == m_uCapacity) {
      Grow(uInHand);
    } else {
      std::memmove(m_spText.get(), m_pBegin, uInHand);
    }
    char* const pText = m_spText.get();
    const std::size_t uWant = m_uCapacity - uInHand;
    const std::size_t uGot = m_input.Read(pText + uInHand, uWant);
    m_uRead += uGot;
    m_bComplete = uGot < uWant;
    m_pBegin = pText;
    SetEnd(pText + uInHand + uGot);
  }

  void Allocate() {
    m_spText.reset(new char[m_uCapacity + Slack]);
    m_pBegin = m_spText.get();
    SetEnd(m_spText.get());
  }

  void Grow(std::size_t uInHand) {
    std::unique_ptr<char[]> spOld = std::move(m_spText);
    const char* const pOld = m_pBegin;
    m_uCapacity *= 2;
    Allocate();
    std::memcpy(m_spText.get(), pOld, uInHand);
  }

  void SetEnd(char* pEnd) {
    m_pEnd = pEnd;
    std::memset(pEnd, '\n', Slack);
  }

  Input m_input;
  std::uint64_t m_uSize;
  std::uint64_t m_uRead = 0;
  std::size_t m_uCapacity = BlockSize;
  std::unique_ptr<char[]> m_spText;
  const char* m_pBegin = nullptr;
  char* m_pEnd = nullptr;
  bool m_bComplete = false;  // nothing comes behind End()
};

// The next line, from source.Begin() to the returned line end, which at the end of the text is
// End(); null when there is none or none is wanted, or when no line end comes within uMost bytes,
// which are in hand then.
template <class Input>
const char* ZuNextLine(ZuLineSource<Input>& source, ZuProgress& progress,
                       std::size_t uMost = static_cast<std::size_t>(-1)) {
  std::size_t uSearched = 0;
  for (;;) {
    const char* const pBegin = source.Begin();
    const char* const pFrom = pBegin + uSearched;
    const std::size_t uLeft = static_cast<std::size_t>(source.End() - pFrom);
    const void* pFound = std::memchr(pFrom, '\n', uLeft);
    if (pFound) return static_cast<const char*>(pFound);
    if (source.IsComplete()) return pBegin == source.End() ? nullptr : source.End();
    uSearched += uLeft;
    if (uSearched > uMost || !source.Refill(progress)) return nullptr;
  }
}
