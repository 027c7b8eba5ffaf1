#pragma once

/// Marks what runs on the render thread: no allocation, no lock, no blocking call, no exception. Compilers
/// that know the attribute check it (-Wfunction-effects, -fsanitize=realtime: the preset rtsan); for others
/// it is a note to the reader.
#if defined(__clang__) && __has_cpp_attribute(clang::nonblocking)
#define VELOTRINE_NONBLOCKING [[clang::nonblocking]]
#else
#define VELOTRINE_NONBLOCKING
#endif

/// Around a call in such a function that the compiler cannot follow, such as one through a pointer or a
/// closure; the reason why it may stand there belongs beside it. The sanitizer follows it all the same.
#if defined(__clang__)
#define VELOTRINE_UNFOLLOWED(...)                                                                            \
    _Pragma("clang diagnostic push") _Pragma("clang diagnostic ignored \"-Wunknown-warning-option\"")        \
        _Pragma("clang diagnostic ignored \"-Wfunction-effects\"")                                           \
            __VA_ARGS__ _Pragma("clang diagnostic pop")
#else
#define VELOTRINE_UNFOLLOWED(...) __VA_ARGS__
#endif

/// For the rest of a scope, the sanitizer lets the render thread do anything: where the program ends, and in
/// what a test's host does by itself.
#if defined(__clang__)
#if __has_feature(realtime_sanitizer)
#include <sanitizer/rtsan_interface.h>
#define VELOTRINE_MAY_BLOCK() const __rtsan::ScopedDisabler mayBlock
#endif
#endif
#ifndef VELOTRINE_MAY_BLOCK
#define VELOTRINE_MAY_BLOCK() static_cast<void>(0)
#endif
