#pragma once

/// Marks what runs on the render thread: no allocation, no lock, no blocking call, no exception. Compilers
/// that know the attribute check it (-Wfunction-effects, -fsanitize=realtime); for others it is a note to
/// the reader.
#if defined(__clang__) && __has_cpp_attribute(clang::nonblocking)
#define VELOTRINE_NONBLOCKING [[clang::nonblocking]]
#else
#define VELOTRINE_NONBLOCKING
#endif
