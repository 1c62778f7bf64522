#include "tests/support/count_allocations.h"

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <new>

namespace {

std::size_t g_uAllocations = 0;
std::size_t g_uLive = 0;
std::size_t g_uBytes = 0;
std::size_t g_uPeak = 0;

bool g_bArmed = false;
bool g_bForGood = false;
bool g_bStruck = false;
std::size_t g_uGood = 0;  // allocations up to the fault

bool Strikes() {
  if (!g_bArmed) return false;
  if (g_bStruck) return g_bForGood;
  g_bStruck = g_uGood == 0;
  if (g_uGood > 0) --g_uGood;
  return g_bStruck;
}

void* TryAllocate(std::size_t uSize) noexcept {
  ++g_uAllocations;
  if (Strikes()) return nullptr;
  void* p = std::malloc(uSize == 0 ? 1 : uSize);
  if (p == nullptr) return nullptr;
  ++g_uLive;
  g_uBytes += malloc_usable_size(p);
  g_uPeak = std::max(g_uPeak, g_uBytes);
  return p;
}

void* Allocate(std::size_t uSize) {
  void* p = TryAllocate(uSize);
  if (p == nullptr) throw std::bad_alloc();
  return p;
}

void Free(void* p) noexcept {
  if (p == nullptr) return;
  --g_uLive;
  g_uBytes -= malloc_usable_size(p);
  std::free(p);
}

}  // namespace

std::size_t CountAllocations() { return g_uAllocations; }
std::size_t LiveAllocations() { return g_uLive; }
std::size_t LiveBytes() { return g_uBytes; }
std::size_t PeakBytes() { return g_uPeak; }
void ResetPeak() { g_uPeak = g_uBytes; }

AllocationFault::AllocationFault(std::size_t uGood, bool bForGood) {
  g_uGood = uGood;
  g_bForGood = bForGood;
  g_bStruck = false;
  g_bArmed = true;
}

AllocationFault::~AllocationFault() { g_bArmed = false; }

bool AllocationFault::HasStruck() const { return g_bStruck; }

// All forms but those for large alignments, so that what one of them takes another may give back.
void* operator new(std::size_t uSize) { return Allocate(uSize); }
void* operator new[](std::size_t uSize) { return Allocate(uSize); }
void* operator new(std::size_t uSize, const std::nothrow_t&) noexcept { return TryAllocate(uSize); }
void* operator new[](std::size_t uSize, const std::nothrow_t&) noexcept {
  return TryAllocate(uSize);
}
void operator delete(void* p) noexcept { Free(p); }
void operator delete[](void* p) noexcept { Free(p); }
void operator delete(void* p, std::size_t) noexcept { Free(p); }
void operator delete[](void* p, std::size_t) noexcept { Free(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { Free(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { Free(p); }
