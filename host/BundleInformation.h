#pragma once

#include <optional>
#include <string>

namespace velotrine {

/// What a program says about itself.
struct BundleInformation
{
    std::optional<std::string> shortVersion; ///< "CFBundleShortVersionString": 1.0.0
    std::optional<std::string> buildNumber;  ///< "CFBundleVersion": 1
};

/// This program's.
[[nodiscard]] BundleInformation mainBundleInformation();

/// "v1.0.0 (1)", with a question mark for what is not known.
[[nodiscard]] std::string versionLine(const BundleInformation& information);

} // namespace velotrine
