#include "host/FlippedContentView.h"

#include "editor/Colours.h"
#include "editor/FontLoader.h"

namespace velotrine {

namespace {

// In points.
constexpr int widestColumn = 464;
constexpr int sideMargin = 28;
constexpr int topMargin = 24;
constexpr int bottomMargin = 32;
constexpr int spacing = 8;

int columnWidth(int viewWidth)
{
    return juce::jlimit(0, widestColumn, viewWidth - 2 * sideMargin);
}

} // namespace

FlippedContentView::FlippedContentView(const HelpContentPage& page)
    : title(page.title, systemFont(22.0f, true), colours::text, juce::Justification::centredTop)
{
    addAndMakeVisible(title);
    for (const auto& item : page.items) {
        items.push_back(std::make_unique<HelpItemView>(item));
        addAndMakeVisible(*items.back());
    }
}

FlippedContentView::~FlippedContentView() = default;

int FlippedContentView::heightForWidth(int width) const
{
    auto height = topMargin + title.heightForWidth(columnWidth(width)) + bottomMargin;
    for (const auto& item : items)
        height += spacing + item->heightForWidth(columnWidth(width));
    return height;
}

juce::Rectangle<int> FlippedContentView::column() const
{
    const auto width = columnWidth(getWidth());
    return {(getWidth() - width) / 2, topMargin, width, getHeight() - topMargin - bottomMargin};
}

void FlippedContentView::resized()
{
    auto area = column();
    const auto place = [&area](auto& view) {
        view.setBounds(area.removeFromTop(view.heightForWidth(area.getWidth())));
        area.removeFromTop(spacing);
    };
    place(title);
    for (const auto& item : items)
        place(*item);
}

} // namespace velotrine
