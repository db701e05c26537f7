#include "support/AllocationFailure.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "ql_types/platform/Memory.hpp"

namespace {

// -1: not armed. Otherwise the number of allocations still to pass before one fails.
long countdown = -1;
bool fired = false;
long counted = 0;

bool allocationMayProceed() {
  if (countdown < 0) return true;
  ++counted;
  if (countdown-- == 0) {
    fired = true;
    countdown = -1;
    return false;
  }
  return true;
}

void* allocate(std::size_t size) {
  if (!allocationMayProceed()) throw std::bad_alloc();
  if (void* p = std::malloc(size ? size : 1)) return p;
  throw std::bad_alloc();
}

void* allocateNoThrow(std::size_t size) noexcept {
  if (!allocationMayProceed()) return nullptr;
  return std::malloc(size ? size : 1);
}

}  // namespace

// Every non-aligned form is replaced, so that no pointer from std::malloc reaches another runtime's delete.
void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocateNoThrow(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocateNoThrow(size); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { std::free(p); }

namespace qltest {

int forEveryAllocationFailure(const std::function<void()>& fn, const std::function<void()>& check) {
  utSetAllocationHook(&allocationMayProceed);
  for (long k = 0;; ++k) {
    fired = false;
    counted = 0;
    countdown = k;
    bool threw = false;
    try {
      fn();
    } catch (...) {
      threw = true;
    }
    countdown = -1;
    if (!fired) {
      utSetAllocationHook(nullptr);
      EXPECT_FALSE(threw) << "threw with no allocation failure injected";
      return static_cast<int>(counted);
    }
    check();
  }
}

}  // namespace qltest
