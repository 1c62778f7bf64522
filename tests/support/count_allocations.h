// The test program's allocator: counts, tells what is alive, and can run out of memory. One thread.
#pragma once

#include <cstddef>

// Allocations by operator new since the start, in the library as well.
std::size_t CountAllocations();

// Blocks and bytes that are allocated now, and the most bytes that were since ResetPeak.
std::size_t LiveAllocations();
std::size_t LiveBytes();
std::size_t PeakBytes();
void ResetPeak();

// Lets an allocation fail while it lives: the one behind the next uGood ones, and, with bForGood,
// all that follow.
class AllocationFault {
 public:
  AllocationFault(std::size_t uGood, bool bForGood);
  ~AllocationFault();
  AllocationFault(const AllocationFault&) = delete;
  AllocationFault& operator=(const AllocationFault&) = delete;

  // An allocation has failed.
  bool HasStruck() const;
};
