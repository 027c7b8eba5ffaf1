#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <functional>

namespace velotrine {

/// A titled, resizable window of this application, hidden until show() is called. The close button and
/// Ctrl-W hide it; it can be shown again. Main thread.
class HostWindow : public juce::DocumentWindow
{
public:
    /// @param content  stays the caller's, and must outlive the window
    HostWindow(const juce::String& title, juce::Colour background, juce::Component& content);
    ~HostWindow() override;

    /// The user has closed the window.
    std::function<void()> onClosed;

    /// All sizes of content are in points, below the menu bar and without the frame.
    void setContentSize(int width, int height);

    /// The user cannot make the content smaller.
    void setMinimumContentSize(int width, int height);

    /// Shows the window and gives it the keyboard. The first time it opens beside another one that is on the
    /// screen, else in the middle.
    void show(const juce::Component* neighbour = nullptr);

    void closeButtonPressed() override;
    bool keyPressed(const juce::KeyPress& key) override;
    void resized() override;
    void moved() override;

protected:
    /// Without the frame, but with the menu bar; in points.
    [[nodiscard]] juce::Rectangle<int> smallestSize();

private:
    void boundSize();
    void place(const juce::Component* neighbour);

    juce::ComponentBoundsConstrainer bounds;
    int minimumContentWidth = 1;
    int minimumContentHeight = 1;
};

} // namespace velotrine
