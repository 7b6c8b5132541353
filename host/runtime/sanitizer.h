// Whether this build runs under the address sanitizer, and what it then needs to know.
#pragma once

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define HOST_SANITIZED 1
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define HOST_SANITIZED 1
#endif

#ifdef HOST_SANITIZED
#include <sanitizer/asan_interface.h>
#include <sanitizer/lsan_interface.h>
#endif
