#include "AllocationCount.h"

#include <cstdlib>
#include <new>

std::int64_t lAllocations = 0;

void* operator new(std::size_t lSize) {
  ++lAllocations;
  if (void* const pMemory = std::malloc(lSize)) return pMemory;
  throw std::bad_alloc();
}

void operator delete(void* pMemory) noexcept { std::free(pMemory); }
void operator delete(void* pMemory, std::size_t) noexcept { std::free(pMemory); }
