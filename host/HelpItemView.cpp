#include "host/HelpItemView.h"

#include "editor/Colours.h"
#include "editor/FontLoader.h"

namespace velotrine {

namespace {

constexpr int labelSpacingPoints = 2;
constexpr int gapBelowParamRowPoints = 8;
constexpr float boxCornerRadiusPoints = 8.0f;

} // namespace

HelpItemView::HelpItemView(const HelpContentItem& item)
{
    setInterceptsMouseClicks(false, false);
    std::visit([this](const auto& content) { add(content); }, item);
}

HelpItemView::~HelpItemView() = default;

void HelpItemView::add(const HelpBody& body)
{
    addLabel(body.text, systemFont(14.0f), colours::text);
}

void HelpItemView::add(const HelpParamRow& row)
{
    insets = {0, 0, gapBelowParamRowPoints, 0};
    addLabel(row.name, systemFont(14.0f, true), colours::text);
    addLabel(row.description, systemFont(13.0f), grey(1.0f, 0.72f));
}

void HelpItemView::add(const HelpTip& tip)
{
    insets = {12, 14, 12, 14};
    boxColour = grey(1.0f, 0.08f);
    addLabel(tip.text, systemFont(13.0f), colours::text);
}

void HelpItemView::addLabel(const std::string& text, const juce::Font& font, juce::Colour colour)
{
    labels.push_back(std::make_unique<WrappingLabel>(text, font, colour));
    addAndMakeVisible(*labels.back());
}

int HelpItemView::heightForWidth(int width) const
{
    auto height = insets.getTopAndBottom() + labelSpacingPoints * (static_cast<int>(labels.size()) - 1);
    for (const auto& label : labels)
        height += label->heightForWidth(width - insets.getLeftAndRight());
    return height;
}

void HelpItemView::resized()
{
    auto area = insets.subtractedFrom(getLocalBounds());
    for (const auto& label : labels) {
        label->setBounds(area.removeFromTop(label->heightForWidth(area.getWidth())));
        area.removeFromTop(labelSpacingPoints);
    }
}

void HelpItemView::paint(juce::Graphics& graphics)
{
    graphics.setColour(boxColour);
    graphics.fillRoundedRectangle(getLocalBounds().toFloat(), boxCornerRadiusPoints);
}

} // namespace velotrine
