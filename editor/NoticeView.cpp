#include "editor/NoticeView.h"

#include "editor/Colours.h"
#include "editor/FontLoader.h"

#include <cmath>

namespace velotrine {

namespace {

// In points.
constexpr float fontPoints = 13.0f;
constexpr int widestText = 420;
constexpr int margin = 12; ///< from text to edge, and from edge to the window's

constexpr int secondsShown = 10;

} // namespace

NoticeView::NoticeView()
{
    setVisible(false);
}

void NoticeView::show(const juce::String& text, bool staysUntilTheNext)
{
    shownText = text;
    setTitle(text);
    fit();
    setVisible(true);
    toFront(false);
    repaint();
    if (staysUntilTheNext)
        stopTimer();
    else
        startTimer(1000 * secondsShown);
    if (auto* handler = getAccessibilityHandler())
        juce::AccessibilityHandler::postAnnouncement(shownText,
                                                     juce::AccessibilityHandler::AnnouncementPriority::low),
            handler->notifyAccessibilityEvent(juce::AccessibilityEvent::titleChanged);
}

void NoticeView::placeIn(juce::Rectangle<int> newArea)
{
    area = newArea;
    fit();
}

void NoticeView::fit()
{
    juce::AttributedString lines;
    lines.append(shownText, systemFont(fontPoints), colours::text);
    lines.setWordWrap(juce::AttributedString::byWord);
    lines.setJustification(juce::Justification::centred);
    layout.createLayout(lines, static_cast<float>(juce::jmin(widestText, area.getWidth() - 4 * margin)));
    const auto width = static_cast<int>(std::ceil(layout.getWidth())) + 2 * margin;
    const auto height = static_cast<int>(std::ceil(layout.getHeight())) + margin;
    setBounds(area.reduced(margin).removeFromBottom(height).withSizeKeepingCentre(width, height));
}

void NoticeView::paint(juce::Graphics& graphics)
{
    const auto bounds = getLocalBounds().toFloat();
    graphics.setColour(colours::field);
    graphics.fillRoundedRectangle(bounds, controlCornerRadius);
    graphics.setColour(colours::track);
    graphics.drawRoundedRectangle(bounds.reduced(0.5f), controlCornerRadius, 1.0f);
    layout.draw(graphics, bounds.withSizeKeepingCentre(layout.getWidth(), layout.getHeight()));
}

void NoticeView::mouseDown(const juce::MouseEvent&)
{
    setVisible(false);
}

void NoticeView::timerCallback()
{
    stopTimer();
    setVisible(false);
}

std::unique_ptr<juce::AccessibilityHandler> NoticeView::createAccessibilityHandler()
{
    return std::make_unique<juce::AccessibilityHandler>(*this, juce::AccessibilityRole::staticText);
}

} // namespace velotrine
