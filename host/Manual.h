#pragma once

#include "host/HostOptions.h"

#include <filesystem>

namespace velotrine {

/// The manual as a page for browsers, if it is installed with this program; else empty.
[[nodiscard]] std::filesystem::path installedManual();

/// Asks the desktop to show a page in its browser, which this program does not wait for. False where there is
/// no desktop, or none that can be asked. This is the only place that starts another program, and nobody but
/// the user comes here.
[[nodiscard]] bool showInBrowser(const std::filesystem::path& page);

/// What --manual does: opens the page, or says where it is. An end with a complaint for an empty path.
[[nodiscard]] ProgramEnd openManual(const HostOptions& options, const std::filesystem::path& page);

} // namespace velotrine
