// Little-endian numbers in byte blocks, on machines of either order.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>

// The number whose little-endian bytes start at pBytes.
template <class T>
T ZuLoadLittle(const unsigned char* pBytes) {
  T value;
  if constexpr (std::endian::native == std::endian::little) {
    std::memcpy(&value, pBytes, sizeof(T));
  } else {
    unsigned char aReversed[sizeof(T)];
    std::reverse_copy(pBytes, pBytes + sizeof(T), aReversed);
    std::memcpy(&value, aReversed, sizeof(T));
  }
  return value;
}

// Stores a number and returns the position behind it.
template <class T>
unsigned char* ZuStoreLittle(unsigned char* pBytes, T value) {
  std::memcpy(pBytes, &value, sizeof(T));
  if constexpr (std::endian::native != std::endian::little) {
    std::reverse(pBytes, pBytes + sizeof(T));
  }
  return pBytes + sizeof(T);
}
