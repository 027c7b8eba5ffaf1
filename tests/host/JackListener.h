#pragma once

namespace velotrine {

/// The loudest sample that the application's outputs send to the server within some seconds; below 0 when the
/// server does not answer or the application is not connected to it.
[[nodiscard]] float peakOnJack(double seconds);

} // namespace velotrine
