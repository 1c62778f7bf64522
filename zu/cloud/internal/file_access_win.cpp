#include <windows.h>

#include "zu/cloud/internal/file_access.h"

namespace {

HANDLE AsHandle(std::intptr_t h) { return reinterpret_cast<HANDLE>(h); }
std::intptr_t AsNumber(HANDLE h) { return reinterpret_cast<std::intptr_t>(h); }

constexpr DWORD kShare = FILE_SHARE_READ;
constexpr DWORD kHint = FILE_FLAG_SEQUENTIAL_SCAN;

}  // namespace

std::intptr_t ZuFileAccess::Open(const char* szPath) {
  if (!szPath) return -1;
  return AsNumber(
      CreateFileA(szPath, GENERIC_READ, kShare, nullptr, OPEN_EXISTING, kHint, nullptr));
}

std::intptr_t ZuFileAccess::Open(const wchar_t* szPath) {
  if (!szPath) return -1;
  return AsNumber(
      CreateFileW(szPath, GENERIC_READ, kShare, nullptr, OPEN_EXISTING, kHint, nullptr));
}

std::uint64_t ZuFileAccess::Size(std::intptr_t hFile) {
  DWORD uHigh = 0;
  SetLastError(NO_ERROR);
  const DWORD uLow = GetFileSize(AsHandle(hFile), &uHigh);
  if (uLow == INVALID_FILE_SIZE && GetLastError() != NO_ERROR) return 0;
  return (static_cast<std::uint64_t>(uHigh) << 32) | uLow;
}

// A mapped file cannot be shortened on this system, so its pages stay.
const unsigned char* ZuFileAccess::Map(std::intptr_t hFile, std::intptr_t* phMapping) {
  *phMapping = -1;
  HANDLE hMapping = CreateFileMappingW(AsHandle(hFile), nullptr, PAGE_READONLY, 0, 0, nullptr);
  if (!hMapping) return nullptr;
  void* pBase = MapViewOfFile(hMapping, FILE_MAP_READ, 0, 0, 0);
  if (!pBase) {
    CloseHandle(hMapping);
    return nullptr;
  }
  *phMapping = AsNumber(hMapping);
  return static_cast<const unsigned char*>(pBase);
}

void ZuFileAccess::Unmap(const unsigned char* pBase, std::intptr_t hMapping) {
  UnmapViewOfFile(pBase);
  CloseHandle(AsHandle(hMapping));
}

std::size_t ZuFileAccess::ReadAt(std::intptr_t hFile, std::uint64_t uPos, void* pTarget,
                                 std::size_t uSize) {
  constexpr std::size_t kPiece = 1u << 30;
  std::size_t uDone = 0;
  while (uDone < uSize) {
    OVERLAPPED place = {};
    place.Offset = static_cast<DWORD>((uPos + uDone) & 0xFFFFFFFFu);
    place.OffsetHigh = static_cast<DWORD>((uPos + uDone) >> 32);
    const std::size_t uPiece = uSize - uDone < kPiece ? uSize - uDone : kPiece;
    DWORD uRead = 0;
    if (!ReadFile(AsHandle(hFile), static_cast<unsigned char*>(pTarget) + uDone,
                  static_cast<DWORD>(uPiece), &uRead, &place) ||
        uRead == 0) {
      break;
    }
    uDone += uRead;
  }
  return uDone;
}

void ZuFileAccess::Close(std::intptr_t hFile) { CloseHandle(AsHandle(hFile)); }
