#include "editor/SpotImage.h"

#include <algorithm>
#include <cmath>

namespace velotrine {

namespace {

juce::uint32 byteFrom(float fraction)
{
    return static_cast<juce::uint32>(255.0f * std::clamp(fraction, 0.0f, 1.0f) + 0.5f);
}

} // namespace

void SpotImage::draw(juce::Point<float> centre, float radius, float lineWidth, juce::Colour fill,
                     juce::Colour line)
{
    // An edge runs from half a pixel inside to half a pixel outside.
    const auto halfLine = lineWidth / 2.0f + 0.5f;
    const auto reach = radius + halfLine;
    const auto side = 2 * static_cast<int>(std::ceil(reach)) + 1;
    if (pixels.getWidth() != side)
        pixels = juce::Image(juce::Image::ARGB, side, side, false, juce::SoftwareImageType());
    firstPixel = {static_cast<int>(std::floor(centre.x - reach)),
                  static_cast<int>(std::floor(centre.y - reach))};

    const auto fillPixel = fill.getPixelARGB();
    const auto linePixel = line.getPixelARGB();
    const auto lineCoverage = std::min(1.0f, lineWidth);
    const auto plainRadius = std::max(0.0f, radius - halfLine);
    const juce::Image::BitmapData data(pixels, juce::Image::BitmapData::writeOnly);
    for (int y = 0; y < side; ++y) {
        auto* pixel = reinterpret_cast<juce::PixelARGB*>(data.getLinePointer(y));
        const auto dy = static_cast<float>(firstPixel.y + y) + 0.5f - centre.y;
        for (int x = 0; x < side; ++x, ++pixel) {
            const auto dx = static_cast<float>(firstPixel.x + x) + 0.5f - centre.x;
            const auto squared = dx * dx + dy * dy;
            if (squared < plainRadius * plainRadius) {
                *pixel = fillPixel;
                continue;
            }
            *pixel = juce::PixelARGB();
            if (squared >= reach * reach)
                continue;
            const auto distance = std::sqrt(squared);
            pixel->blend(fillPixel, byteFrom(radius + 0.5f - distance));
            pixel->blend(linePixel, byteFrom(std::min(lineCoverage, halfLine - std::abs(distance - radius))));
        }
    }
}

} // namespace velotrine
