#include "tests/support/count_allocations.h"

#include <cstdlib>
#include <new>

namespace {

std::size_t g_uAllocations = 0;

void* TryAllocate(std::size_t uSize) noexcept {
  ++g_uAllocations;
  return std::malloc(uSize == 0 ? 1 : uSize);
}

void* Allocate(std::size_t uSize) {
  void* p = TryAllocate(uSize);
  if (p == nullptr) throw std::bad_alloc();
  return p;
}

}  // namespace

std::size_t CountAllocations() { return g_uAllocations; }

// All forms but those for large alignments, so that what one of them takes another may give back.
void* operator new(std::size_t uSize) { return Allocate(uSize); }
void* operator new[](std::size_t uSize) { return Allocate(uSize); }
void* operator new(std::size_t uSize, const std::nothrow_t&) noexcept { return TryAllocate(uSize); }
void* operator new[](std::size_t uSize, const std::nothrow_t&) noexcept {
  return TryAllocate(uSize);
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { std::free(p); }
