#pragma once

#include "commandline/ProgramDescription.h"
#include "host/AudioDeviceOptions.h"
#include "host/OutputDevices.h"

#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace velotrine {

/// What the application was told to do on its command line.
struct HostOptions
{
    std::string program = "velotrine-app"; ///< the name under which it was started, for its messages
    AudioDeviceOptions device;
    std::optional<double> scale; ///< pixels a point, smallestScale to largestScale; none follows the desktop
    std::string file;            ///< with settings to begin with; empty for none
    std::string session;         ///< a file with settings that is kept up to date; empty for none
    bool listDevices = false;    ///< print deviceListing() instead of opening a window
    bool manual = false;         ///< open the manual instead
};

/// What the application prints before it ends without opening a window.
struct ProgramEnd
{
    int exitCode = 0; ///< 0 done, 2 something typed was wrong
    std::string out;  ///< for standard output
    std::string err;  ///< for standard error
};

/// Reads the command line, the program's name first. An end for --help and --version, and for the first
/// argument that will not do: one line that says what, where, and what instead.
[[nodiscard]] std::variant<HostOptions, ProgramEnd> parseHostOptions(std::span<const char* const> arguments);

/// What its help says, under the name that gets installed.
[[nodiscard]] ProgramDescription hostDescription();

/// A line for each device, type and name; a sentence on standard error when there are none.
[[nodiscard]] ProgramEnd deviceListing(const HostOptions& options, const std::vector<OutputDevice>& devices);

/// An end when the options ask for a device that is not among these; names the nearest.
[[nodiscard]] std::optional<ProgramEnd> refuseUnknownDevice(const HostOptions& options,
                                                            const std::vector<OutputDevice>& devices);

/// An end where the session's file is there and is no state: it would be overwritten.
[[nodiscard]] std::optional<ProgramEnd> refuseSession(const HostOptions& options);

} // namespace velotrine
