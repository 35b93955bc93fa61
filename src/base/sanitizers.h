#ifndef VRKT_BASE_SANITIZERS_H_
#define VRKT_BASE_SANITIZERS_H_

#include <cstddef>

// Tells the address sanitizer which bytes of a buffer are in use. In other builds, the
// functions do nothing.

#if defined(__SANITIZE_ADDRESS__)
#define VRKT_HAS_ADDRESS_SANITIZER
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VRKT_HAS_ADDRESS_SANITIZER
#endif
#endif

#ifdef VRKT_HAS_ADDRESS_SANITIZER
#include <sanitizer/asan_interface.h>

inline void AllowAccess(const void* bytes, std::size_t size) {
  __asan_unpoison_memory_region(bytes, size);
}
inline void ForbidAccess(const void* bytes, std::size_t size) {
  __asan_poison_memory_region(bytes, size);
}
#else
inline void AllowAccess(const void* /*bytes*/, std::size_t /*size*/) {}
inline void ForbidAccess(const void* /*bytes*/, std::size_t /*size*/) {}
#endif

#endif  // VRKT_BASE_SANITIZERS_H_
