// The host's memory service. Grounds, property blocks and element dimensions of data types
// come from here and go back here.
#pragma once

#include <cstddef>

/// Allocates size bytes, or returns null; a size of 0 returns null.
void* utMalloc(std::size_t size);
/// Allocates count zero-filled items of size bytes, or returns null; an empty request returns null.
void* utCalloc(std::size_t count, std::size_t size);
/// Frees what utMalloc or utCalloc gave; null is ignored.
void utFree(void* p);
/// Asked before each allocation of utMalloc and utCalloc; returning false makes that allocation fail.
using utAllocationHook = bool (*)();
/// Sets the hook (null for none): the host's memory service lets its tests simulate exhausted memory.
void utSetAllocationHook(utAllocationHook hook);
/// Length of a NUL-terminated text; 0 for null.
std::size_t utStrlen(const char* text);
