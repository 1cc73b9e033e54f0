// SPDX-License-Identifier: MIT
// Which sanitizer a test was built with, for the few figures that mean nothing under one.
#pragma once

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define VXMCD_TEST_THREAD_SANITIZER 1
#endif
#if __has_feature(address_sanitizer)
#define VXMCD_TEST_ADDRESS_SANITIZER 1
#endif
#endif
#if defined(__SANITIZE_THREAD__)
#define VXMCD_TEST_THREAD_SANITIZER 1
#endif
#if defined(__SANITIZE_ADDRESS__)
#define VXMCD_TEST_ADDRESS_SANITIZER 1
#endif

#if defined(VXMCD_TEST_THREAD_SANITIZER)
inline constexpr bool kHasThreadSanitizer = true;
#else
inline constexpr bool kHasThreadSanitizer = false;
#endif

#if defined(VXMCD_TEST_THREAD_SANITIZER) || defined(VXMCD_TEST_ADDRESS_SANITIZER)
inline constexpr bool kHasSanitizer = true;
#else
inline constexpr bool kHasSanitizer = false;
#endif
