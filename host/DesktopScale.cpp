#include "host/DesktopScale.h"

#include "audiounit/ParameterText.h"
#include "host/XSettings.h"

#include <span>
#include <string>

#ifdef __linux__
#include <X11/Xresource.h>
#endif

namespace velotrine {

namespace {

constexpr double plainDpi = 96.0;
constexpr double xftDpiParts = 1024.0; ///< a settings manager counts dots an inch in parts of a dot

std::optional<double> ifSensible(std::optional<double> scale)
{
    return scale && *scale >= smallestScale && *scale <= largestScale ? scale : std::nullopt;
}

std::optional<double> scaleOfManager(std::span<const std::byte> settings)
{
    const auto windows = ifSensible(xSettingsInteger(settings, "Gdk/WindowScalingFactor"));
    // Windows are scaled by whole numbers only; a desktop at 150 % leaves them at 1 and says so here.
    if (windows && *windows > 1.0)
        return windows;
    if (const auto dpi = xSettingsInteger(settings, "Xft/DPI"))
        if (const auto scale = ifSensible(*dpi / xftDpiParts / plainDpi))
            return scale;
    return windows;
}

std::string xftDpi([[maybe_unused]] const std::string& resources)
{
    std::string text;
#ifdef __linux__
    XrmInitialize();
    auto* const database = XrmGetStringDatabase(resources.c_str());
    char* type = nullptr;
    XrmValue value{};
    if (XrmGetResource(database, "Xft.dpi", "Xft.Dpi", &type, &value) != 0 && value.addr != nullptr)
        text = value.addr;
    XrmDestroyDatabase(database);
#endif
    return text;
}

} // namespace

std::optional<double> desktopScale(const DesktopSettings& settings)
{
    if (const auto scale = scaleOfManager(settings.xSettings))
        return scale;
    if (const auto dpi = numberFromText(xftDpi(settings.resources)))
        if (const auto scale = ifSensible(*dpi / plainDpi))
            return scale;
    return ifSensible(numberFromText(settings.gdkScale));
}

} // namespace velotrine
