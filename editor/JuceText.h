#pragma once

#include <juce_core/juce_core.h>

#include <string_view>

namespace velotrine {

/// A text of ours, in UTF-8, as the toolkit has it.
[[nodiscard]] inline juce::String juceText(std::string_view text)
{
    return juce::String::fromUTF8(text.data(), static_cast<int>(text.size()));
}

} // namespace velotrine
