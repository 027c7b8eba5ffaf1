#include "host/SegmentedControl.h"

#include "editor/Colours.h"
#include "editor/FontLoader.h"

#include <cmath>
#include <numeric>

namespace velotrine {

namespace {

constexpr float preferredFontPoints = 13.0f;
constexpr float smallestFontPoints = 8.0f;
constexpr float fontStepPoints = 0.25f;
constexpr float preferredPaddingPoints = 11.0f; ///< on either side of a label
constexpr float smallestPaddingPoints = 5.0f;
constexpr float cornerRadiusPoints = 6.0f;
constexpr int focusRingPoints = 2; ///< kept free around the segments

float labelWidth(const juce::String& label, float fontPoints)
{
    return systemFont(fontPoints).getStringWidthFloat(label);
}

} // namespace

/// One label. A radio button to assistive technology.
class SegmentedControl::Segment final : public juce::Component
{
public:
    Segment(SegmentedControl& control, int indexInControl, const juce::String& labelText)
        : owner(control), index(indexInControl), label(labelText)
    {
        setTitle(label);
        setRepaintsOnMouseActivity(true);
    }

    [[nodiscard]] float textWidth(float fontPoints) const { return labelWidth(label, fontPoints); }

    [[nodiscard]] bool isSelected() const noexcept { return owner.selected == index; }

    void mouseDown(const juce::MouseEvent& event) override
    {
        if (event.mods.isLeftButtonDown())
            owner.userSelects(index);
    }

    void paint(juce::Graphics& graphics) override
    {
        if (isSelected()) {
            graphics.setColour(grey(1.0f, 0.26f));
            graphics.fillRoundedRectangle(getLocalBounds().toFloat().reduced(2.0f),
                                          cornerRadiusPoints - 1.0f);
        }
        graphics.setColour(colours::text.withAlpha(isSelected() || isMouseOver() ? 1.0f : 0.78f));
        graphics.setFont(systemFont(owner.points));
        graphics.drawText(label, getLocalBounds(), juce::Justification::centred, false);
    }

    std::unique_ptr<juce::AccessibilityHandler> createAccessibilityHandler() override
    {
        return std::make_unique<Handler>(*this);
    }

private:
    class Handler final : public juce::AccessibilityHandler
    {
    public:
        explicit Handler(Segment& segmentToDescribe)
            : AccessibilityHandler(segmentToDescribe, juce::AccessibilityRole::radioButton,
                                   actionsOf(segmentToDescribe)),
              segment(segmentToDescribe)
        {}

        juce::AccessibleState getCurrentState() const override
        {
            const auto state = AccessibilityHandler::getCurrentState().withCheckable();
            return segment.isSelected() ? state.withChecked() : state;
        }

    private:
        static juce::AccessibilityActions actionsOf(Segment& segment)
        {
            const auto select = [&segment] { segment.owner.userSelects(segment.index); };
            return juce::AccessibilityActions()
                .addAction(juce::AccessibilityActionType::press, select)
                .addAction(juce::AccessibilityActionType::toggle, select);
        }

        Segment& segment;
    };

    SegmentedControl& owner;
    const int index;
    const juce::String label;
};

SegmentedControl::SegmentedControl(const juce::StringArray& labels) : points(preferredFontPoints)
{
    setWantsKeyboardFocus(true);
    for (const auto& label : labels) {
        segments.push_back(std::make_unique<Segment>(*this, segmentCount(), label));
        addAndMakeVisible(*segments.back());
    }
}

SegmentedControl::~SegmentedControl() = default;

void SegmentedControl::setSelectedSegment(int index)
{
    if (index < 0 || index >= segmentCount() || index == selected)
        return;
    selected = index;
    repaint();
    if (auto* handler = segments[static_cast<std::size_t>(index)]->getAccessibilityHandler())
        handler->notifyAccessibilityEvent(juce::AccessibilityEvent::valueChanged);
}

void SegmentedControl::userSelects(int index)
{
    if (index < 0 || index >= segmentCount() || index == selected)
        return;
    setSelectedSegment(index);
    if (onChange)
        onChange(index);
}

int SegmentedControl::preferredWidth() const
{
    auto width = 2.0f * focusRingPoints;
    for (const auto& segment : segments)
        width += segment->textWidth(preferredFontPoints) + 2.0f * preferredPaddingPoints;
    return static_cast<int>(std::ceil(width));
}

juce::Rectangle<int> SegmentedControl::segmentBounds(int index) const
{
    return segments.at(static_cast<std::size_t>(index))->getBounds();
}

void SegmentedControl::resized()
{
    const auto area = getLocalBounds().reduced(focusRingPoints);
    const auto available = static_cast<float>(area.getWidth());
    const auto textWidth = [this](float fontPoints) {
        return std::accumulate(segments.begin(), segments.end(), 0.0f, [&](float sum, const auto& segment) {
            return sum + segment->textWidth(fontPoints);
        });
    };
    const auto sides = 2.0f * static_cast<float>(segmentCount());
    points = preferredFontPoints;
    while (points > smallestFontPoints && textWidth(points) + sides * smallestPaddingPoints > available)
        points -= fontStepPoints;

    // The room that the labels leave is shared out, even when there is more than was asked for.
    const auto padding = (available - textWidth(points)) / sides;
    auto x = static_cast<float>(area.getX());
    for (const auto& segment : segments) {
        const auto right = x + segment->textWidth(points) + 2.0f * padding;
        segment->setBounds(area.withX(juce::roundToInt(x)).withRight(juce::roundToInt(right)));
        x = right;
    }
}

void SegmentedControl::paint(juce::Graphics& graphics)
{
    const auto area = getLocalBounds().reduced(focusRingPoints).toFloat();
    graphics.setColour(grey(1.0f, 0.10f));
    graphics.fillRoundedRectangle(area, cornerRadiusPoints);

    // A line between neighbours, but not beside the selected segment, whose own edge is enough.
    graphics.setColour(grey(1.0f, 0.12f));
    for (int index = 1; index < segmentCount(); ++index)
        if (index != selected && index - 1 != selected)
            graphics.fillRect(juce::Rectangle<float>(static_cast<float>(segmentBounds(index).getX()) - 0.5f,
                                                     area.getY() + 6.0f, 1.0f, area.getHeight() - 12.0f));
    if (hasKeyboardFocus(false) && focusIsFromKeyboard) {
        graphics.setColour(grey(1.0f, 0.45f));
        graphics.drawRoundedRectangle(area.expanded(1.0f), cornerRadiusPoints + 1.0f, 1.0f);
    }
}

bool SegmentedControl::keyPressed(const juce::KeyPress& key)
{
    if (key == juce::KeyPress(juce::KeyPress::leftKey)) {
        userSelects(selected - 1);
        return true;
    }
    if (key == juce::KeyPress(juce::KeyPress::rightKey)) {
        userSelects(selected + 1);
        return true;
    }
    return false;
}

void SegmentedControl::focusGained(FocusChangeType cause)
{
    focusIsFromKeyboard = cause == focusChangedByTabKey;
    repaint();
}

void SegmentedControl::focusLost(FocusChangeType)
{
    repaint();
}

std::unique_ptr<juce::AccessibilityHandler> SegmentedControl::createAccessibilityHandler()
{
    return std::make_unique<juce::AccessibilityHandler>(*this, juce::AccessibilityRole::group);
}

} // namespace velotrine
