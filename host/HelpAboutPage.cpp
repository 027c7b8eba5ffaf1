#include "host/HelpAboutPage.h"

#include "audiounit/Identity.h"
#include "editor/Colours.h"
#include "editor/FontLoader.h"
#include "host/HelpColours.h"

namespace velotrine {

namespace {

// In points.
constexpr int motifSide = 132;
constexpr int ruleWidth = 180;
constexpr int ruleHeight = 1;
constexpr int spacing = 6;
constexpr int gapBelowMotif = 20;
constexpr int gapBelowName = 4;

constexpr double widestStackOfPage = 0.85;

juce::Font nameFont()
{
    registerDisplayFont();
    return displayFont(44.0f);
}

} // namespace

HelpAboutPage::HelpAboutPage(const std::string& versionLine)
    : name(identity::name, nameFont(), helpColours::textColor, juce::Justification::centredTop),
      version(versionLine, systemFont(13.0f), helpColours::dimColor, juce::Justification::centredTop),
      tagline("Generative pitched sequencer", systemFont(14.0f), helpColours::textColor,
              juce::Justification::centredTop),
      format("AUv3 — runs in any compatible host", systemFont(12.0f), helpColours::dimColor,
             juce::Justification::centredTop)
{
    rule.setBackground(helpColours::accentColor);
    for (auto* view :
         std::initializer_list<juce::Component*>{&motif, &name, &version, &rule, &tagline, &format})
        addAndMakeVisible(view);
}

std::vector<HelpAboutPage::Row> HelpAboutPage::rowsWithin(int widest)
{
    const auto text = [widest](WrappingLabel& label, int gapAfter) {
        const auto width = juce::jmin(widest, label.preferredWidth());
        return Row{&label, width, label.heightForWidth(width), gapAfter};
    };
    return {{&motif, motifSide, motifSide, gapBelowMotif},
            text(name, gapBelowName),
            text(version, spacing),
            {&rule, juce::jmin(widest, ruleWidth), ruleHeight, spacing},
            text(tagline, spacing),
            text(format, 0)};
}

void HelpAboutPage::resized()
{
    const auto rows = rowsWithin(static_cast<int>(widestStackOfPage * getWidth()));
    int width = 0;
    int height = 0;
    for (const auto& row : rows) {
        width = juce::jmax(width, row.width);
        height += row.height + row.gapAfter;
    }
    stackBounds = getLocalBounds().withSizeKeepingCentre(width, height);
    auto y = stackBounds.getY();
    for (const auto& row : rows) {
        row.view->setBounds((getWidth() - row.width) / 2, y, row.width, row.height);
        y += row.height + row.gapAfter;
    }
}

} // namespace velotrine
