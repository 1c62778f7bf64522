// Sizes of the windows and blocks of files and of the inverse table.
#pragma once

#include <cstddef>

// uSize; a build for fuzzing (ZU_SMALL_SIZES) takes uSmall instead, so that inputs of a few
// kilobytes fill a block, move a window and look into a whole table.
constexpr std::size_t ZuBuildSize([[maybe_unused]] std::size_t uSize,
                                  [[maybe_unused]] std::size_t uSmall) {
#ifdef ZU_SMALL_SIZES
  return uSmall;
#else
  return uSize;
#endif
}
