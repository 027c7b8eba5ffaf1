#include "editor/SeedPanel.h"

#include "audiounit/ParameterText.h"
#include "editor/Colours.h"
#include "editor/FontLoader.h"

#include <cmath>
#include <limits>

namespace velotrine {

namespace {

// In points.
constexpr int panelWidth = 200;
constexpr int panelHeight = 52;
constexpr int inset = 12;
constexpr int labelWidth = 52;
constexpr float fontPoints = 14.0f;
constexpr float panelCornerRadius = 8.0f;

std::optional<std::uint32_t> seedFrom(const juce::String& text)
{
    const auto number = numberFromText(text.trim().toStdString());
    if (!number || *number < 0.0 || *number > std::numeric_limits<std::uint32_t>::max() ||
        *number != std::floor(*number))
        return std::nullopt;
    return static_cast<std::uint32_t>(*number);
}

} // namespace

SeedPanel::SeedPanel(juce::Component& parent)
{
    setBackground(colours::panel, panelCornerRadius);
    setTitle("Seed");
    label.setText("SEED", juce::dontSendNotification);
    label.setFont(displayFont(fontPoints));
    label.setColour(juce::Label::textColourId, colours::text);
    label.setBorderSize({});
    label.setInterceptsMouseClicks(false, false);
    addAndMakeVisible(label);
    field.setTitle("Seed");
    field.setFontSize(fontPoints);
    field.onEntryEnded = [this](const juce::String& text) {
        if (const auto seed = seedFrom(text); seed && onSeed)
            onSeed(*seed);
    };
    // In a music host, the keyboard comes and goes once more before it stays.
    field.onLeft = [this] {
        juce::MessageManager::callAsync([panel = SafePointer(this)] {
            if (panel != nullptr && !panel->field.hasKeyboardFocus(true))
                panel->setVisible(false);
        });
    };
    addAndMakeVisible(field);
    parent.addChildComponent(this);
}

void SeedPanel::open(std::uint32_t seed)
{
    field.show(juce::String(seed));
    setBounds(getParentComponent()->getLocalBounds().withSizeKeepingCentre(panelWidth, panelHeight));
    setVisible(true);
    toFront(false);
    field.grabKeyboardFocus();
    field.selectAll();
}

void SeedPanel::resized()
{
    auto area = getLocalBounds().reduced(inset);
    label.setBounds(area.removeFromLeft(labelWidth));
    field.setBounds(area);
}

} // namespace velotrine
