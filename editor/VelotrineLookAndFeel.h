#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace velotrine {

/// How the toolkit's own controls look here: dark greys, white lines, nothing that shines. Main thread.
class VelotrineLookAndFeel final : public juce::LookAndFeel_V4
{
public:
    VelotrineLookAndFeel();

    std::unique_ptr<juce::LowLevelGraphicsContext> createGraphicsContext(
        const juce::Image& screen, juce::Point<int> origin, const juce::RectangleList<int>& clip) override;

    void drawLinearSlider(juce::Graphics& graphics, int x, int y, int width, int height, float position,
                          float minPosition, float maxPosition, juce::Slider::SliderStyle style,
                          juce::Slider& slider) override;
    int getSliderThumbRadius(juce::Slider& slider) override;

    void fillTextEditorBackground(juce::Graphics& graphics, int width, int height,
                                  juce::TextEditor& editor) override;
    void drawTextEditorOutline(juce::Graphics& graphics, int width, int height,
                               juce::TextEditor& editor) override;

    juce::Font getPopupMenuFont() override;
    void drawPopupMenuBackground(juce::Graphics& graphics, int width, int height) override;
    int getPopupMenuBorderSize() override;
    int getMenuWindowFlags() override;

    /// The menu bar's menus, and those of the fields, which the toolkit opens on behalf of nobody, lie in the
    /// window that has the keyboard. In a window of its own, as other menus have it, a menu takes the
    /// keyboard when it is clicked, and the field that it is to act on has lost it.
    juce::Component* getParentComponentForMenuOptions(const juce::PopupMenu::Options& options) override;

    void preparePopupMenuWindow(juce::Component& menu) override;

    void drawResizableFrame(juce::Graphics&, int, int, const juce::BorderSize<int>&) override {}

    void getIdealPopupMenuItemSize(const juce::String& text, bool isSeparator, int standardHeight, int& width,
                                   int& height) override;
    void drawTickBox(juce::Graphics& graphics, juce::Component& component, float x, float y, float width,
                     float height, bool isTicked, bool isEnabled, bool isHighlighted, bool isDown) override;
    juce::Path getTickShape(float height) override;

    juce::Font getMenuBarFont(juce::MenuBarComponent& bar, int index, const juce::String& text) override;
    void drawMenuBarBackground(juce::Graphics& graphics, int width, int height, bool isMouseOver,
                               juce::MenuBarComponent& bar) override;
    void drawMenuBarItem(juce::Graphics& graphics, int width, int height, int index, const juce::String& text,
                         bool isMouseOverItem, bool isMenuOpen, bool isMouseOverBar,
                         juce::MenuBarComponent& bar) override;

    juce::Font getComboBoxFont(juce::ComboBox& box) override;
    void drawComboBox(juce::Graphics& graphics, int width, int height, bool isDown, int buttonX, int buttonY,
                      int buttonWidth, int buttonHeight, juce::ComboBox& box) override;
    void positionComboBoxText(juce::ComboBox& box, juce::Label& label) override;

    juce::Font getTextButtonFont(juce::TextButton& button, int height) override;
    void drawButtonBackground(juce::Graphics& graphics, juce::Button& button, const juce::Colour& colour,
                              bool isHighlighted, bool isDown) override;

    int getDefaultScrollbarWidth() override;
    void drawScrollbar(juce::Graphics& graphics, juce::ScrollBar& bar, int x, int y, int width, int height,
                       bool isVertical, int thumbStart, int thumbSize, bool isMouseOver,
                       bool isDown) override;
};

/// Our look for all components and windows of ours, for as long as one of them holds this by a
/// juce::SharedResourcePointer. Main thread, with JUCE running.
class DefaultLook
{
public:
    DefaultLook() { juce::LookAndFeel::setDefaultLookAndFeel(&look); }

    ~DefaultLook() { juce::LookAndFeel::setDefaultLookAndFeel(nullptr); }

    DefaultLook(const DefaultLook&) = delete;
    DefaultLook& operator=(const DefaultLook&) = delete;

private:
    VelotrineLookAndFeel look;
};

} // namespace velotrine
