#ifndef VRKT_BASE_SANITIZERS_H_
#define VRKT_BASE_SANITIZERS_H_

// Whether this is a build with the address sanitizer. Compilers differ in how they tell.
#ifdef __SANITIZE_ADDRESS__
inline constexpr bool kHasAddressSanitizer = true;
#elif defined(__has_feature)
inline constexpr bool kHasAddressSanitizer = __has_feature(address_sanitizer);
#else
inline constexpr bool kHasAddressSanitizer = false;
#endif

#endif  // VRKT_BASE_SANITIZERS_H_
