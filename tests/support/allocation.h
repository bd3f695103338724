// The replaced `operator new` of the test programs. A request above the ceiling throws by itself, in sanitized builds
// too (a sanitizer's own operator new would stop the process), and a chosen request of a thread can be made to fail.
#pragma once

#include <cstddef>

inline constexpr std::size_t kNativeAllocationCeiling = std::size_t{1} << 30;

// Makes the nth operator new of this thread from now throw std::bad_alloc, or it and all that follow.
void failNativeAllocation(unsigned long nth, bool forEver);
// Ends it; true when a request did fail since it was set.
bool endFailingNativeAllocation();
