#pragma once

#include <cstddef>
#include <cstdint>

#include "zu/export.h"

// The common CRC-32 (reflected, polynomial 0xEDB88320) of some bytes. With the result for what
// stands before them as uCrc it goes on from there.
ZU_API std::uint32_t ZuCalcCRC32(void const* pData, std::size_t nBytes, std::uint32_t uCrc = 0);
