#include "plugin/HostedState.h"

#include "audiounit/StateDocument.h"
#include "audiounit/StateText.h"

#include <algorithm>
#include <cstdint>
#include <string>

namespace velotrine {

namespace {

constexpr auto editorKey = "editor";
constexpr auto widthKey = "width";
constexpr auto heightKey = "height";

/// None for anything but a whole number.
std::optional<int> readSide(const StateDocument& editor, const char* key)
{
    const auto found = editor.find(key);
    if (found == editor.end() || !found->is_number_integer())
        return std::nullopt;
    if (found->is_number_unsigned())
        return static_cast<int>(std::min<std::uint64_t>(found->get<std::uint64_t>(), EditorSize::maxSide));
    return 0; // a negative number, below every bound
}

std::optional<EditorSize> readEditorSize(const StateDocument& document)
{
    const auto editor = document.find(editorKey);
    if (editor == document.end())
        return std::nullopt;
    const auto width = editor->is_object() ? readSide(*editor, widthKey) : std::nullopt;
    const auto height = editor->is_object() ? readSide(*editor, heightKey) : std::nullopt;
    if (!width || !height)
        throw StateRefusal(R"("editor" must be an object with the whole numbers "width" and "height")");
    return EditorSize{*width, *height}.bounded();
}

} // namespace

EditorSize EditorSize::bounded() const noexcept
{
    return {std::clamp(width, minWidth, maxSide), std::clamp(height, minHeight, maxSide)};
}

std::string hostedStateText(const AUFullState& state, EditorSize editorSize)
{
    const auto editor = jsonObject(
        {{widthKey, std::to_string(editorSize.width)}, {heightKey, std::to_string(editorSize.height)}}, 1);
    return textFromState(state, {{editorKey, editor}});
}

HostedStateReading hostedStateFromText(std::string_view text)
{
    try {
        const auto document = parseState(text);
        return {stateFromDocument(document), readEditorSize(document), {}};
    } catch (const StateRefusal& refusal) {
        return {std::nullopt, std::nullopt, refusal.what()};
    }
}

} // namespace velotrine
