// Texts that somebody types into the editor's fields: the first byte says into which. Nothing is drawn.

#include "audiounit/Parameters.h"
#include "audiounit/VelotrineComponent.h"
#include "editor/VelotrineAUViewControllerMac.h"
#include "fuzz/Demand.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace velotrine {
namespace {

void findFields(juce::Component& view, std::vector<ValueField*>& fields)
{
    if (auto* const field = dynamic_cast<ValueField*>(&view))
        fields.push_back(field);
    for (auto* const child : view.getChildren())
        findFields(*child, fields);
}

/// The editor of one unit, with a field at each of its knobs and the panel of a ring open.
class Editor
{
public:
    Editor()
    {
        controller.createAudioUnit(velotrineComponentDescription());
        controller.view().setSize(480, 360);
        controller.showRingEditor(2);
        for (auto* const knob : {controller.activityKnob.get(), controller.boredomKnob.get(),
                                 controller.caloriesKnob.get(), controller.drudgeryKnob.get()})
            knob->keyPressed(juce::KeyPress('1', {}, '1'));
        findFields(controller.view(), fields);
        // Tempo, the six of a ring, the knobs, and the seed.
        demand(fields.size() == 12, "the editor has twelve fields");
    }

    void type(std::size_t field, const juce::String& text)
    {
        auto& used = *fields[field % fields.size()];
        used.setText(text, false);
        used.onEntryEnded(used.getText());
        for (const auto& parameter : parameterTable()) {
            const auto value = controller.audioUnit->dspKernel->parameter(parameter.address);
            demand(value >= parameter.minValue && value <= parameter.maxValue,
                   "whatever is typed, every value stays within its range");
        }
    }

private:
    juce::ScopedJuceInitialiser_GUI juce;
    VelotrineAUViewControllerMac controller;
    std::vector<ValueField*> fields;
};

} // namespace
} // namespace velotrine

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // Left as it is when the program ends: JUCE must not outlive main().
    static auto* const editor = new velotrine::Editor;
    if (size == 0)
        return 0;
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    editor->type(data[0], juce::String::fromUTF8(text.data(), static_cast<int>(text.size())));
    return 0;
}
