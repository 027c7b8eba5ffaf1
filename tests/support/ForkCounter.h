#pragma once

namespace velotrine {

/// How many processes this one has started, by whatever call and in whichever library. Where the environment
/// names a file in VELOTRINE_FORK_LOG, it gets a line for each as well: for a program that is started with
/// this library loaded before all others.
[[nodiscard]] __attribute__((visibility("default"))) int processesStarted() noexcept;

} // namespace velotrine
