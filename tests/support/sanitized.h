#pragma once

/// KS_HMI_SANITIZED is 1 in programs whose allocator is a sanitizer's, else 0.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define KS_HMI_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define KS_HMI_SANITIZED 1
#endif
#endif
#ifndef KS_HMI_SANITIZED
#define KS_HMI_SANITIZED 0
#endif
