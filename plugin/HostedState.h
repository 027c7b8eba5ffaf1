#pragma once

#include "platform/AUFullState.h"

#include <optional>
#include <string>
#include <string_view>

namespace velotrine {

/// Size of the editor's contents in points, whatever the scale at which a screen shows them.
struct EditorSize
{
    static constexpr int minWidth = 360;
    static constexpr int minHeight = 320;
    static constexpr int maxSide = 16384; ///< larger than any screen

    int width = 480;
    int height = 360;

    bool operator==(const EditorSize&) const = default;

    /// The nearest size that the editor can have.
    [[nodiscard]] EditorSize bounded() const noexcept;
};

/// What a session remembers of a plug-in, read from a text; or a sentence that says what is wrong with the
/// text.
struct HostedStateReading
{
    std::optional<AUFullState> state;
    std::optional<EditorSize> editorSize; ///< none where the text has none
    std::string error;
};

/// The audio unit's own state text (see audiounit/StateText.h) with the editor's size as a further member,
/// "editor", which readers of the audio unit's state ignore. The same text for the same state.
[[nodiscard]] std::string hostedStateText(const AUFullState& state, EditorSize editorSize);

/// Reads such a text, or one without an editor's size. Strict about form, forgiving about sizes out of range.
/// Never throws for what the text says.
[[nodiscard]] HostedStateReading hostedStateFromText(std::string_view text);

} // namespace velotrine
