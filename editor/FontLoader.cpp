#include "editor/FontLoader.h"

#include "DisplayFontData.h"

#include <ft2build.h>
#include FT_FREETYPE_H

#include <iostream>
#include <string>
#include <utility>

namespace velotrine {

namespace {

// JUCE's height of a font is ascent plus descent. The display font's make one em; those of the usual system
// fonts about this much.
constexpr float displayFontHeightInEms = 1.0f;
constexpr float systemFontHeightInEms = 1.16f;

struct Registration
{
    bool attempted = false;
    juce::Typeface::Ptr typeface;
};

Registration& registration()
{
    static Registration only;
    return only;
}

/// Part of the program: a plug-in has no folder of its own that could be relied on.
std::span<const std::byte> embeddedFont()
{
    int size = 0;
    const auto* data = DisplayFontData::getNamedResource("EverydaySansSerifRegular_otf", size);
    return std::as_bytes(std::span(data, static_cast<std::size_t>(data != nullptr ? size : 0)));
}

struct FontCheck
{
    std::string error; ///< empty for a font
    std::string postScriptName;
};

// JUCE hands anything to FreeType and uses the answer unseen, so look first.
FontCheck checkFont(std::span<const std::byte> otf)
{
    FT_Library library = nullptr;
    if (FT_Init_FreeType(&library) != 0)
        return {"FreeType does not start", {}};
    FontCheck result;
    FT_Face face = nullptr;
    const auto error = FT_New_Memory_Face(library, reinterpret_cast<const FT_Byte*>(otf.data()),
                                          static_cast<FT_Long>(otf.size()), 0, &face);
    if (error != 0) {
        result.error = "these data are not a font (FreeType error " + std::to_string(error) + ")";
    } else if (const auto* name = FT_Get_Postscript_Name(face); name != nullptr) {
        result.postScriptName = name;
    }
    FT_Done_FreeType(library);
    return result;
}

} // namespace

void registerDisplayFont()
{
    if (!registration().attempted)
        registerDisplayFontFrom(embeddedFont());
}

void registerDisplayFontFrom(std::span<const std::byte> otf)
{
    auto& current = registration();
    current.attempted = true;
    current.typeface = nullptr;
    if (otf.empty()) {
        std::cout << "[FontLoader] Font file not found in bundle" << std::endl;
        return;
    }
    const auto check = checkFont(otf);
    if (!check.error.empty()) {
        std::cout << "[FontLoader] Registration failed: " << check.error << std::endl;
        return;
    }
    if (check.postScriptName == displayFontName)
        current.typeface = juce::Typeface::createSystemTypefaceFor(otf.data(), otf.size());
}

juce::Font displayFont(float points)
{
    const auto& typeface = registration().typeface;
    return typeface != nullptr ? juce::Font(typeface).withHeight(points * displayFontHeightInEms)
                               : systemFont(points);
}

juce::Font systemFont(float points, bool bold)
{
    return {juce::Font::getDefaultSansSerifFontName(), points * systemFontHeightInEms,
            bold ? juce::Font::bold : juce::Font::plain};
}

} // namespace velotrine
