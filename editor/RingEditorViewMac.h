#pragma once

#include "editor/FlippedView.h"
#include "editor/RingSlider.h"
#include "editor/ValueField.h"

#include <array>
#include <functional>
#include <memory>

namespace velotrine {

/// One ring's settings as the panel shows them.
struct RingSettings
{
    int spots = 0;
    float phaseTurns = 0.0f;
    float probability = 0.0f;
    int octave = 0;
    float volume = 0.0f;
    float timbre = 0.0f;
};

/// The panel that floats above the rings and edits one of them. Its title area drags it about. Main thread.
class RingEditorViewMac final : public FlippedView
{
public:
    /// The rows from top to bottom; also the first argument of onParamChanged.
    enum Kind
    {
        steps,
        shift,
        luck,
        octave,
        ringVol,
        timbre,
        kindCount,
    };

    RingEditorViewMac();

    int ringIndex = 0;

    /// While true, no change of a control is reported.
    bool suppressCallbacks = false;

    /// Told of the user's edits; whole numbers come as floats.
    std::function<void(int kind, int ring, float value)> onParamChanged;

    /// Told when a drag of a slider begins, and when it ends.
    std::function<void(int kind, int ring)> onEditBegan;
    std::function<void(int kind, int ring)> onEditEnded;

    /// Shows a ring and its settings without reporting anything.
    void fill(int ring, const RingSettings& settings);

    /// Gives the keyboard to the first row's field.
    void focusFirstField() { rows[steps].field->grabKeyboardFocus(); }

    /// Of the panel, what drags it.
    [[nodiscard]] juce::Rectangle<float> titleArea() const;

    [[nodiscard]] RingSlider& slider(Kind kind) { return *rows[kind].slider; }

    [[nodiscard]] ValueField& field(Kind kind) { return *rows[kind].field; }

    [[nodiscard]] juce::Label& label(Kind kind) { return *rows[kind].label; }

    [[nodiscard]] juce::Label& title() { return titleLabel; }

    void resized() override;
    void mouseDown(const juce::MouseEvent& event) override;
    void mouseDrag(const juce::MouseEvent& event) override;
    void mouseUp(const juce::MouseEvent& event) override;

private:
    struct Row
    {
        std::unique_ptr<juce::Label> label;
        std::unique_ptr<RingSlider> slider;
        std::unique_ptr<ValueField> field;
    };

    void makeRow(Kind kind);
    void show(Kind kind, float value);
    void sliderChanged(Kind kind);
    void textEntryEnded(Kind kind, const juce::String& text);

    juce::Label titleLabel;
    std::array<Row, kindCount> rows;
    bool isDragging = false;
    juce::Point<int> dragStartOrigin;   ///< of the panel in its parent
    juce::Point<float> dragStartWindow; ///< of the mouse in its parent, whose scale may not be the screen's
};

} // namespace velotrine
