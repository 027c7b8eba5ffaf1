#pragma once

#include "host/HelpContent.h"
#include "host/HelpItemView.h"
#include "host/WrappingLabel.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <vector>

namespace velotrine {

/// What a help page scrolls: title and items in one column, from the top down.
class FlippedContentView final : public juce::Component
{
public:
    explicit FlippedContentView(const HelpContentPage& page);
    ~FlippedContentView() override;

    /// Height, in points, that shows everything at a width.
    [[nodiscard]] int heightForWidth(int width) const;

    /// The title's and the items' column at the present size.
    [[nodiscard]] juce::Rectangle<int> column() const;

    void resized() override;

private:
    WrappingLabel title;
    std::vector<std::unique_ptr<HelpItemView>> items;
};

} // namespace velotrine
