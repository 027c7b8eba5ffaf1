#include "editor/VelotrineLookAndFeel.h"

#include "editor/Colours.h"
#include "editor/FontLoader.h"
#include "editor/PixelContext.h"

#include <cmath>

namespace velotrine {

namespace {

constexpr float menuFontPoints = 13.0f;
constexpr float sliderThumbRadius = 5.5f;
constexpr float sliderTrackHeight = 2.0f;
constexpr float tickHeight = 4.0f;
constexpr int menuBarLineHeight = 2; ///< under the menu that is open

const auto menuBackground = grey(0.2f);

void fillControl(juce::Graphics& graphics, juce::Rectangle<float> bounds, bool isHighlighted, bool isDown)
{
    graphics.setColour(isDown          ? colours::controlDown
                       : isHighlighted ? colours::controlHover
                                       : colours::control);
    graphics.fillRoundedRectangle(bounds, controlCornerRadius);
}

/// A small arrow down, as wide as asked, with lines of one weight.
juce::Path arrowDown(juce::Point<float> middle, float width)
{
    juce::Path path;
    path.startNewSubPath(middle.x - width / 2.0f, middle.y - width / 4.0f);
    path.lineTo(middle.x, middle.y + width / 4.0f);
    path.lineTo(middle.x + width / 2.0f, middle.y - width / 4.0f);
    return path;
}

juce::PathStrokeType roundedStroke(float width)
{
    return {width, juce::PathStrokeType::curved, juce::PathStrokeType::rounded};
}

} // namespace

VelotrineLookAndFeel::VelotrineLookAndFeel()
{
    const auto set = [this](std::initializer_list<int> ids, juce::Colour colour) {
        for (const auto id : ids)
            setColour(id, colour);
    };
    set({juce::ResizableWindow::backgroundColourId, juce::DocumentWindow::backgroundColourId},
        colours::background);
    set({juce::Label::textColourId, juce::TextEditor::textColourId, juce::ComboBox::textColourId,
         juce::TextButton::textColourOnId, juce::TextButton::textColourOffId, juce::PopupMenu::textColourId,
         juce::PopupMenu::highlightedTextColourId, juce::CaretComponent::caretColourId,
         juce::TextEditor::highlightedTextColourId, juce::PopupMenu::headerTextColourId},
        colours::text);
    set({juce::TextEditor::backgroundColourId, juce::ListBox::backgroundColourId,
         juce::FileBrowserComponent::filenameBoxBackgroundColourId},
        colours::field);
    set({juce::ListBox::textColourId, juce::DirectoryContentsDisplayComponent::textColourId,
         juce::DirectoryContentsDisplayComponent::highlightedTextColourId,
         juce::FileBrowserComponent::filenameBoxTextColourId,
         juce::FileBrowserComponent::currentPathBoxTextColourId},
        colours::text);
    set({juce::DirectoryContentsDisplayComponent::highlightColourId}, grey(1.0f, 0.2f));
    set({juce::TextEditor::highlightColourId}, grey(1.0f, 0.25f));
    set({juce::PopupMenu::backgroundColourId}, menuBackground);
    set({juce::PopupMenu::highlightedBackgroundColourId}, grey(1.0f, 0.2f));
}

std::unique_ptr<juce::LowLevelGraphicsContext> VelotrineLookAndFeel::createGraphicsContext(
    const juce::Image& screen, juce::Point<int> origin, const juce::RectangleList<int>& clip)
{
    return std::make_unique<PixelContext>(screen, origin, clip);
}

void VelotrineLookAndFeel::drawLinearSlider(juce::Graphics& graphics, int x, int y, int width, int height,
                                            float position, float, float, juce::Slider::SliderStyle,
                                            juce::Slider& slider)
{
    const auto area = juce::Rectangle<int>(x, y, width, height).toFloat();
    const auto middle = area.getCentreY();
    const juce::Rectangle<float> track(area.getX(), middle - sliderTrackHeight / 2.0f, area.getWidth(),
                                       sliderTrackHeight);
    graphics.setColour(colours::track);
    graphics.fillRoundedRectangle(track, sliderTrackHeight / 2.0f);
    graphics.setColour(colours::text);
    graphics.fillRoundedRectangle(track.withRight(position), sliderTrackHeight / 2.0f);

    if (slider.getInterval() > 0.0) {
        const auto steps =
            juce::roundToInt((slider.getMaximum() - slider.getMinimum()) / slider.getInterval());
        graphics.setColour(colours::track);
        for (int i = 0; i <= steps; ++i) {
            const auto tickX =
                area.getX() + area.getWidth() * static_cast<float>(i) / static_cast<float>(steps);
            graphics.fillRect(juce::Rectangle<float>(1.0f, tickHeight)
                                  .withCentre({tickX, middle + sliderThumbRadius + tickHeight / 2.0f}));
        }
    }

    const auto thumb = juce::Rectangle<float>(2.0f * sliderThumbRadius, 2.0f * sliderThumbRadius)
                           .withCentre({position, middle});
    graphics.setColour(colours::text);
    graphics.fillEllipse(thumb);
}

int VelotrineLookAndFeel::getSliderThumbRadius(juce::Slider&)
{
    return juce::roundToInt(std::ceil(sliderThumbRadius));
}

void VelotrineLookAndFeel::fillTextEditorBackground(juce::Graphics& graphics, int width, int height,
                                                    juce::TextEditor& editor)
{
    graphics.setColour(editor.findColour(juce::TextEditor::backgroundColourId));
    graphics.fillRoundedRectangle(juce::Rectangle<int>(width, height).toFloat(), controlCornerRadius);
}

void VelotrineLookAndFeel::drawTextEditorOutline(juce::Graphics& graphics, int width, int height,
                                                 juce::TextEditor& editor)
{
    if (!editor.hasKeyboardFocus(true))
        return;
    graphics.setColour(colours::focus);
    graphics.drawRoundedRectangle(juce::Rectangle<int>(width, height).toFloat().reduced(0.5f),
                                  controlCornerRadius, 1.0f);
}

juce::Font VelotrineLookAndFeel::getPopupMenuFont()
{
    return systemFont(menuFontPoints);
}

void VelotrineLookAndFeel::drawPopupMenuBackground(juce::Graphics& graphics, int width, int height)
{
    graphics.fillAll(menuBackground);
    graphics.setColour(grey(1.0f, 0.15f));
    graphics.drawRect(0, 0, width, height);
}

int VelotrineLookAndFeel::getPopupMenuBorderSize()
{
    return 4;
}

int VelotrineLookAndFeel::getMenuWindowFlags()
{
    return 0;
}

juce::Component* VelotrineLookAndFeel::getParentComponentForMenuOptions(
    const juce::PopupMenu::Options& options)
{
    const auto* opener = options.getTargetComponent();
    if (opener == nullptr)
        opener = juce::Component::getCurrentlyFocusedComponent();
    else if (dynamic_cast<const juce::MenuBarComponent*>(opener) == nullptr)
        opener = nullptr;
    return opener != nullptr ? opener->getTopLevelComponent()
                             : LookAndFeel_V4::getParentComponentForMenuOptions(options);
}

void VelotrineLookAndFeel::preparePopupMenuWindow(juce::Component& menu)
{
    // The toolkit leaves this undone for the entries, which hand the keyboard to the window that they lie in.
    for (auto* const entry : menu.getChildren())
        entry->setMouseClickGrabsKeyboardFocus(false);
}

void VelotrineLookAndFeel::getIdealPopupMenuItemSize(const juce::String& text, bool isSeparator,
                                                     int standardHeight, int& width, int& height)
{
    LookAndFeel_V4::getIdealPopupMenuItemSize(text, isSeparator, standardHeight, width, height);
    height = isSeparator ? 9 : std::max(height, 24);
}

void VelotrineLookAndFeel::drawTickBox(juce::Graphics& graphics, juce::Component&, float x, float y,
                                       float width, float height, bool isTicked, bool isEnabled,
                                       bool isHighlighted, bool isDown)
{
    const auto box = juce::Rectangle<float>(x, y, width, height);
    fillControl(graphics, box, isHighlighted, isDown);
    if (!isTicked)
        return;
    graphics.setColour(colours::text.withMultipliedAlpha(isEnabled ? 1.0f : dimmedAlpha));
    const auto tick = getTickShape(1.0f);
    graphics.fillPath(tick, tick.getTransformToScaleToFit(box.reduced(width * 0.2f), true));
}

juce::Path VelotrineLookAndFeel::getTickShape(float height)
{
    juce::Path line;
    line.startNewSubPath(0.0f, 0.55f * height);
    line.lineTo(0.35f * height, 0.9f * height);
    line.lineTo(height, 0.1f * height);
    juce::Path outline;
    roundedStroke(0.14f * height).createStrokedPath(outline, line);
    return outline;
}

juce::Font VelotrineLookAndFeel::getMenuBarFont(juce::MenuBarComponent&, int, const juce::String&)
{
    return systemFont(menuFontPoints);
}

void VelotrineLookAndFeel::drawMenuBarBackground(juce::Graphics& graphics, int, int, bool,
                                                 juce::MenuBarComponent&)
{
    graphics.fillAll(menuBackground);
}

void VelotrineLookAndFeel::drawMenuBarItem(juce::Graphics& graphics, int width, int height, int index,
                                           const juce::String& text, bool isMouseOverItem, bool isMenuOpen,
                                           bool, juce::MenuBarComponent& bar)
{
    if (isMouseOverItem || isMenuOpen)
        graphics.fillAll(colours::control);
    if (isMenuOpen) {
        graphics.setColour(colours::focus);
        graphics.fillRect(0, height - menuBarLineHeight, width, menuBarLineHeight);
    }
    graphics.setColour(colours::text.withMultipliedAlpha(bar.isEnabled() ? 1.0f : dimmedAlpha));
    graphics.setFont(getMenuBarFont(bar, index, text));
    graphics.drawText(text, 0, 0, width, height, juce::Justification::centred, false);
}

juce::Font VelotrineLookAndFeel::getComboBoxFont(juce::ComboBox&)
{
    return systemFont(menuFontPoints);
}

void VelotrineLookAndFeel::drawComboBox(juce::Graphics& graphics, int width, int height, bool isDown, int,
                                        int, int, int, juce::ComboBox& box)
{
    const auto bounds = juce::Rectangle<int>(width, height).toFloat();
    fillControl(graphics, bounds, box.isMouseOver(true), isDown);
    graphics.setColour(colours::text.withMultipliedAlpha(box.isEnabled() ? 1.0f : dimmedAlpha));
    graphics.strokePath(arrowDown({bounds.getRight() - 14.0f, bounds.getCentreY()}, 8.0f),
                        roundedStroke(1.6f));
}

void VelotrineLookAndFeel::positionComboBoxText(juce::ComboBox& box, juce::Label& label)
{
    label.setBounds(box.getLocalBounds().withTrimmedLeft(6).withTrimmedRight(24));
    label.setFont(getComboBoxFont(box));
}

// Of the typefaces that the toolkit takes for the system's, none has a weight between regular and bold: those
// are the nearest to a medium pop-up and a semibold button.
juce::Font VelotrineLookAndFeel::getTextButtonFont(juce::TextButton&, int)
{
    return systemFont(15.0f, true);
}

void VelotrineLookAndFeel::drawButtonBackground(juce::Graphics& graphics, juce::Button& button,
                                                const juce::Colour&, bool isHighlighted, bool isDown)
{
    const auto bounds = button.getLocalBounds().toFloat();
    fillControl(graphics, bounds, isHighlighted, isDown);
}

int VelotrineLookAndFeel::getDefaultScrollbarWidth()
{
    return 10;
}

void VelotrineLookAndFeel::drawScrollbar(juce::Graphics& graphics, juce::ScrollBar&, int x, int y, int width,
                                         int height, bool isVertical, int thumbStart, int thumbSize,
                                         bool isMouseOver, bool isDown)
{
    const auto area = juce::Rectangle<int>(x, y, width, height);
    const auto thumb = (isVertical ? area.withY(thumbStart).withHeight(thumbSize)
                                   : area.withX(thumbStart).withWidth(thumbSize))
                           .reduced(2)
                           .toFloat();
    graphics.setColour(isMouseOver || isDown ? grey(1.0f, 0.45f) : colours::track);
    graphics.fillRoundedRectangle(thumb, std::min(thumb.getWidth(), thumb.getHeight()) / 2.0f);
}

} // namespace velotrine
