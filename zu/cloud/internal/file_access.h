// What the reading buffer needs of the system; one source file for each.
#pragma once

#include <cstddef>
#include <cstdint>

// Handles are file descriptors on POSIX systems and HANDLE values on Windows; -1 is none.
struct ZuFileAccess {
  // Opens a file for sequential reading, open for other readers too; -1 when that fails.
  static std::intptr_t Open(const char* szPath);
  static std::intptr_t Open(const wchar_t* szPath);

  // Size in bytes; 0 when there is none to tell.
  static std::uint64_t Size(std::intptr_t hFile);

  // Maps the whole file where its pages cannot be taken away while they are mapped. Null, mapping
  // handle -1: read through ReadAt.
  static const unsigned char* Map(std::intptr_t hFile, std::intptr_t* phMapping);
  static void Unmap(const unsigned char* pBase, std::intptr_t hMapping);

  // Reads up to uSize bytes at a position; fewer at the end of the file or on an error.
  static std::size_t ReadAt(std::intptr_t hFile, std::uint64_t uPos, void* pTarget,
                            std::size_t uSize);

  static void Close(std::intptr_t hFile);
};
