#include "editor/RingEditorViewMac.h"

#include "audiounit/ParameterText.h"
#include "editor/Colours.h"
#include "editor/FontLoader.h"
#include "editor/JuceText.h"

#include <algorithm>
#include <cmath>

namespace velotrine {

namespace {

constexpr float panelCornerRadius = 8.0f;
constexpr float inset = 10.0f;
constexpr float rowGap = 4.0f;
constexpr float columnGap = 4.0f;
constexpr float fieldWidthOfPanel = 0.18f;
constexpr float titleAreaOfPanel = 0.25f;

/// How a typed number becomes a setting.
enum class EntryRule
{
    whole,
    wrapped,
    bounded,
};

struct RowInfo
{
    const char* label;
    RingParameter parameter;
    EntryRule entry;

    [[nodiscard]] bool isWhole() const { return entry == EntryRule::whole; }

    /// From 0, for every ring.
    [[nodiscard]] float maxValue() const { return parameterTable()[addressOf(parameter, 0)].maxValue; }
};

constexpr std::array<RowInfo, RingEditorViewMac::kindCount> rowInfos{{
    {"STEPS", RingParameter::spots, EntryRule::whole},
    {"SHIFT", RingParameter::phase, EntryRule::wrapped},
    {"LUCK", RingParameter::probability, EntryRule::bounded},
    {"OCTAVE", RingParameter::octave, EntryRule::whole},
    {"VOLUME", RingParameter::volume, EntryRule::bounded},
    {"TONE", RingParameter::timbre, EntryRule::bounded},
}};

/// A text that is no number counts as 0; blanks around one do not matter.
float numberFrom(const juce::String& text, const RowInfo& row)
{
    const auto trimmed = text.trim().toStdString();
    if (row.isWhole() && trimmed.find_first_not_of("+-0123456789") != std::string::npos)
        return 0.0f;
    const auto number = static_cast<float>(numberFromText(trimmed).value_or(0.0));
    return std::isfinite(number) ? number : 0.0f;
}

float applied(float number, const RowInfo& row)
{
    if (row.entry == EntryRule::wrapped) {
        const auto fraction = number - std::floor(number);
        return fraction < 1.0f ? fraction : 0.0f;
    }
    // Adding zero makes -0 a plain 0.
    return std::clamp(number, 0.0f, row.maxValue()) + 0.0f;
}

juce::String fieldText(float value, const RowInfo& row)
{
    return row.isWhole() ? juce::String(static_cast<int>(value))
                         : juceText(fixedText(static_cast<double>(value), 2));
}

void dressLabel(juce::Label& label)
{
    label.setColour(juce::Label::textColourId, colours::text);
    label.setBorderSize({});
    label.setMinimumHorizontalScale(1.0f);
    label.setInterceptsMouseClicks(false, false);
}

} // namespace

RingEditorViewMac::RingEditorViewMac()
{
    registerDisplayFont();
    setBackground(colours::panel, panelCornerRadius);
    setTitle("Ring editor");
    dressLabel(titleLabel);
    titleLabel.setJustificationType(juce::Justification::centredRight);
    addAndMakeVisible(titleLabel);
    for (const auto kind : {steps, shift, luck, octave, ringVol, timbre})
        makeRow(kind);
}

void RingEditorViewMac::makeRow(Kind kind)
{
    const auto& info = rowInfos[kind];
    auto& row = rows[kind];

    row.label = std::make_unique<juce::Label>(juce::String(), info.label);
    dressLabel(*row.label);

    row.field = std::make_unique<ValueField>();
    row.field->setTitle(info.label);
    row.field->setExplicitFocusOrder(2 * kind + 2);
    row.field->onEntryEnded = [this, kind](const juce::String& text) { textEntryEnded(kind, text); };

    row.slider = std::make_unique<RingSlider>();
    row.slider->setTitle(info.label);
    row.slider->setExplicitFocusOrder(2 * kind + 1);
    row.slider->setRange(0.0, static_cast<double>(info.maxValue()), info.isWhole() ? 1.0 : 0.0);
    row.slider->textFromValueFunction = [&info](double value) {
        return fieldText(static_cast<float>(value), info);
    };
    row.slider->onValueChange = [this, kind] { sliderChanged(kind); };
    row.slider->onEntryBegan = [&row](const juce::String& text) { row.field->beginEntry(text, *row.slider); };
    row.slider->onDragStart = [this, kind] {
        if (onEditBegan)
            onEditBegan(kind, ringIndex);
    };
    row.slider->onDragEnd = [this, kind] {
        if (onEditEnded)
            onEditEnded(kind, ringIndex);
    };

    addAndMakeVisible(*row.label);
    addAndMakeVisible(*row.field);
    addAndMakeVisible(*row.slider);
}

void RingEditorViewMac::fill(int ring, const RingSettings& settings)
{
    suppressCallbacks = true;
    ringIndex = ring;
    titleLabel.setText("RING " + juce::String(ring + 1), juce::dontSendNotification);
    show(steps, static_cast<float>(settings.spots));
    show(shift, settings.phaseTurns);
    show(luck, settings.probability);
    show(octave, static_cast<float>(settings.octave));
    show(ringVol, settings.volume);
    show(timbre, settings.timbre);
    suppressCallbacks = false;
}

void RingEditorViewMac::show(Kind kind, float value)
{
    rows[kind].slider->setValue(static_cast<double>(value), juce::dontSendNotification);
    rows[kind].field->show(fieldText(value, rowInfos[kind]));
}

void RingEditorViewMac::sliderChanged(Kind kind)
{
    if (suppressCallbacks)
        return;
    const auto value = static_cast<float>(rows[kind].slider->getValue());
    rows[kind].field->show(fieldText(value, rowInfos[kind]));
    if (onParamChanged)
        onParamChanged(kind, ringIndex, value);
}

void RingEditorViewMac::textEntryEnded(Kind kind, const juce::String& text)
{
    const auto value = applied(numberFrom(text, rowInfos[kind]), rowInfos[kind]);
    show(kind, value);
    if (onParamChanged)
        onParamChanged(kind, ringIndex, value);
}

void RingEditorViewMac::resized()
{
    const auto width = static_cast<float>(getWidth());
    const auto height = static_cast<float>(getHeight());
    const auto rowHeight = std::max(22.0f, (height - 20.0f) * 0.125f);
    const auto fontSize = std::max(10.0f, std::min(width * 0.05f, rowHeight * 0.55f));
    const auto font = displayFont(fontSize);
    const auto labelWidth = std::min(width * 0.34f, std::ceil(font.getStringWidthFloat("VOLUME")) + 6.0f);
    const auto fieldWidth = fieldWidthOfPanel * width;
    const auto sliderX = inset + labelWidth + columnGap;
    const auto sliderWidth = width - sliderX - fieldWidth - 12.0f - inset;

    const auto place = [](juce::Component& component, float x, float y, float w, float h) {
        component.setBounds(juce::Rectangle<float>(x, y, w, h).toNearestInt());
    };
    titleLabel.setFont(font);
    place(titleLabel, inset, inset, width - 2.0f * inset, rowHeight);
    auto y = inset + rowHeight + rowGap;
    for (auto& row : rows) {
        row.label->setFont(font);
        row.field->setFontSize(0.85f * fontSize);
        place(*row.label, inset, y, labelWidth, rowHeight);
        place(*row.slider, sliderX, y, sliderWidth, rowHeight);
        place(*row.field, sliderX + sliderWidth + columnGap, y + 2.0f, fieldWidth, rowHeight - 4.0f);
        y += rowHeight + rowGap;
    }
}

juce::Rectangle<float> RingEditorViewMac::titleArea() const
{
    return getLocalBounds().toFloat().withHeight(static_cast<float>(getHeight()) * titleAreaOfPanel);
}

void RingEditorViewMac::mouseDown(const juce::MouseEvent& event)
{
    if (!isPrimaryButton(event) || event.position.y >= titleArea().getBottom())
        return;
    isDragging = true;
    dragStartOrigin = getPosition();
    dragStartWindow = event.position + getPosition().toFloat();
}

void RingEditorViewMac::mouseDrag(const juce::MouseEvent& event)
{
    if (!isDragging)
        return;
    const auto movement = event.position + getPosition().toFloat() - dragStartWindow;
    setTopLeftPosition(dragStartOrigin + movement.roundToInt());
}

void RingEditorViewMac::mouseUp(const juce::MouseEvent&)
{
    isDragging = false;
}

} // namespace velotrine
