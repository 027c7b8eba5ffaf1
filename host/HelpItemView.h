#pragma once

#include "host/HelpContent.h"
#include "host/WrappingLabel.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <vector>

namespace velotrine {

/// One item of a help page: its texts one below the other, in a tinted box if it is a tip.
class HelpItemView final : public juce::Component
{
public:
    explicit HelpItemView(const HelpContentItem& item);
    ~HelpItemView() override;

    /// Height, in points, that shows all texts whole at a width.
    [[nodiscard]] int heightForWidth(int width) const;

    void paint(juce::Graphics& graphics) override;
    void resized() override;

private:
    void add(const HelpBody& body);
    void add(const HelpParamRow& row);
    void add(const HelpTip& tip);
    void addLabel(const std::string& text, const juce::Font& font, juce::Colour colour);

    std::vector<std::unique_ptr<WrappingLabel>> labels;
    juce::BorderSize<int> insets{0};
    juce::Colour boxColour;
};

} // namespace velotrine
