#pragma once

#include <cstdint>

/// How often this program has asked for memory with operator new, which AllocationCount.cpp
/// replaces by one that counts.
extern std::int64_t lAllocations;
