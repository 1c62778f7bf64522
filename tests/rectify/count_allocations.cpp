#include "tests/rectify/count_allocations.h"

#include <cstdlib>
#include <new>

namespace {

std::size_t g_uAllocations = 0;

void* Allocate(std::size_t uSize) {
  ++g_uAllocations;
  void* p = std::malloc(uSize == 0 ? 1 : uSize);
  if (p == nullptr) throw std::bad_alloc();
  return p;
}

}  // namespace

std::size_t CountAllocations() { return g_uAllocations; }

void* operator new(std::size_t uSize) { return Allocate(uSize); }
void* operator new[](std::size_t uSize) { return Allocate(uSize); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }
