// The test program's allocator counts, to show what never allocates.
#pragma once

#include <cstddef>

// Allocations by operator new since the start, in the library as well.
std::size_t CountAllocations();
