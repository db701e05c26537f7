// The memory service, on the C allocator.
#include "ql_types/platform/Memory.hpp"

#include <cstdlib>
#include <cstring>

namespace {
utAllocationHook allocationHook = nullptr;
bool mayAllocate() { return !allocationHook || allocationHook(); }
}  // namespace

void utSetAllocationHook(utAllocationHook hook) { allocationHook = hook; }
void* utMalloc(std::size_t size) { return size && mayAllocate() ? std::malloc(size) : nullptr; }
void* utCalloc(std::size_t count, std::size_t size) {
  return count && size && mayAllocate() ? std::calloc(count, size) : nullptr;
}
void utFree(void* p) { std::free(p); }
std::size_t utStrlen(const char* text) { return text ? std::strlen(text) : 0; }
