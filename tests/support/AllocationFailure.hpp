// Injected allocation failure, for tests that an operation leaves its object as it was when memory runs out.
//
// Linking the test support library replaces the global operator new and delete of the test program with
// ones that count allocations. While an injection is armed, the allocation with the chosen number fails:
// operator new throws std::bad_alloc and the host memory service (utMalloc, utCalloc) returns null.
#pragma once

#include <functional>

namespace qltest {

/// Calls fn once for every allocation it makes, with that allocation failing, until a call completes with no
/// failure injected; after each call that failed, calls check() with injection off. fn may throw anything:
/// a throw after an injected failure is expected, one without is reported as a test failure. Returns the
/// number of allocations fn made on its successful call.
int forEveryAllocationFailure(const std::function<void()>& fn, const std::function<void()>& check);

}  // namespace qltest
