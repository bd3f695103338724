// What freed and fresh memory looks like: a pattern that is no valid pointer, no sensible number and no object header,
// and poison for AddressSanitizer where it is built in.
#pragma once

#include <cstring>

#if defined(__SANITIZE_ADDRESS__)
#define VESK_HOST_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VESK_HOST_ASAN 1
#endif
#endif
#if defined(__SANITIZE_THREAD__)
#define VESK_HOST_TSAN 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define VESK_HOST_TSAN 1
#endif
#endif

#ifdef VESK_HOST_ASAN
#include <sanitizer/asan_interface.h>
#endif

// For the few functions that read memory which instrumentation would object to.
#define VESK_HOST_UNCHECKED __attribute__((no_sanitize("address", "thread", "undefined"), noinline))

namespace host {

#if defined(VESK_HOST_ASAN) || defined(VESK_HOST_TSAN)
inline constexpr bool kSanitized = true;
#else
inline constexpr bool kSanitized = false;
#endif

inline constexpr unsigned char kFreedByte = 0xDB;
inline constexpr unsigned char kUninitializedByte = 0xCB;

// From poison to unpoison, AddressSanitizer reports every access to the memory; without it nothing happens.
#ifdef VESK_HOST_ASAN
inline constexpr unsigned long kRedzoneBytes = 16;  // between neighbouring blocks, always poisoned
inline void poison(void* memory, unsigned long bytes) { __asan_poison_memory_region(memory, bytes); }
inline void unpoison(void* memory, unsigned long bytes) { __asan_unpoison_memory_region(memory, bytes); }
#else
inline constexpr unsigned long kRedzoneBytes = 0;
inline void poison(void*, unsigned long) {}
inline void unpoison(void*, unsigned long) {}
#endif

// The look of memory that is freed, and of memory handed out in stress mode and under sanitizers.
inline void overwriteFreed(void* memory, unsigned long bytes) { std::memset(memory, kFreedByte, bytes); }
inline void overwriteUninitialized(void* memory, unsigned long bytes) {
  std::memset(memory, kUninitializedByte, bytes);
}
// For large blocks out of stress mode: a line of every system page is enough to show, and cheap.
inline void overwriteFreedSparsely(char* memory, unsigned long bytes) {
  for (unsigned long offset = 0; offset < bytes; offset += 4096) std::memset(memory + offset, kFreedByte, 64);
}

}  // namespace host
