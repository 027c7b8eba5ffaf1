#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <functional>
#include <vector>

namespace velotrine {

/// A row of labelled segments of which one is selected, by a click or by the left and right arrow keys.
/// Text and padding give way when there is little room. Main thread.
class SegmentedControl final : public juce::Component
{
public:
    explicit SegmentedControl(const juce::StringArray& labels);
    ~SegmentedControl() override;

    /// The user has selected another segment.
    std::function<void(int)> onChange;

    [[nodiscard]] int selectedSegment() const noexcept { return selected; }

    /// Does not call onChange. Ignores an index that is no segment's.
    void setSelectedSegment(int index);

    [[nodiscard]] int segmentCount() const noexcept { return static_cast<int>(segments.size()); }

    /// Width, in points, at which nothing gives way.
    [[nodiscard]] int preferredWidth() const;

    /// Where a segment is, in this component.
    [[nodiscard]] juce::Rectangle<int> segmentBounds(int index) const;

    /// Points of the labels' font at the present width.
    [[nodiscard]] float fontPoints() const noexcept { return points; }

    void paint(juce::Graphics& graphics) override;
    void resized() override;
    bool keyPressed(const juce::KeyPress& key) override;
    void focusGained(FocusChangeType cause) override;
    void focusLost(FocusChangeType cause) override;
    std::unique_ptr<juce::AccessibilityHandler> createAccessibilityHandler() override;

private:
    class Segment;

    void userSelects(int index);

    std::vector<std::unique_ptr<Segment>> segments;
    int selected = 0;
    float points;
    bool focusIsFromKeyboard = false; ///< a ring shows where the arrow keys go, to those who use keys
};

} // namespace velotrine
