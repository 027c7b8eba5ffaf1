#include "host/HelpWindowController.h"

#include "host/BundleInformation.h"
#include "host/HelpAboutPage.h"
#include "host/HelpColours.h"
#include "host/HelpContent.h"
#include "host/HelpScrollPage.h"

namespace velotrine {

namespace {

// In points.
constexpr int contentWidth = 560;
constexpr int contentHeight = 620;
constexpr int minimumContentWidth = 420;
constexpr int minimumContentHeight = 480;
constexpr int gapAroundSegments = 14;
constexpr int segmentsHeight = 30;
constexpr int smallestSideMargin = 12;

} // namespace

/// Segments above, pages below.
class HelpWindowController::ContentView final : public FlippedView
{
public:
    explicit ContentView(HelpWindowController& controllerOfContent) : controller(controllerOfContent) {}

    void resized() override
    {
        auto& segments = *controller.segmented;
        const auto width = juce::jmin(segments.preferredWidth(), getWidth() - 2 * smallestSideMargin);
        segments.setBounds((getWidth() - width) / 2, gapAroundSegments, width, segmentsHeight);
        const auto pagesTop = segments.getBottom() + gapAroundSegments;
        controller.pageContainer->setBounds(getLocalBounds().withTop(pagesTop));
        for (const auto& page : controller.pages)
            page->setBounds(controller.pageContainer->getLocalBounds());
    }

    // Keys choose a segment or scroll its page, wherever in the window the keyboard is.
    bool keyPressed(const juce::KeyPress& key) override
    {
        const auto index = static_cast<std::size_t>(controller.segmented->selectedSegment());
        return controller.segmented->keyPressed(key) || controller.pages[index]->keyPressed(key);
    }

private:
    HelpWindowController& controller;
};

class HelpWindowController::HelpWindow final : public HostWindow
{
public:
    using HostWindow::HostWindow;

    bool keyPressed(const juce::KeyPress& key) override
    {
        if (key == juce::KeyPress(juce::KeyPress::escapeKey)) {
            closeButtonPressed();
            return true;
        }
        return HostWindow::keyPressed(key) || getContentComponent()->keyPressed(key);
    }
};

HelpWindowController::HelpWindowController()
    : bgColor(helpColours::bgColor), textColor(helpColours::textColor), dimColor(helpColours::dimColor),
      accentColor(helpColours::accentColor)
{
    buildContent();
    helpWindow = std::make_unique<HelpWindow>("Velotrine Help", bgColor, *content);
    helpWindow->setContentSize(contentWidth, contentHeight);
    helpWindow->setMinimumContentSize(minimumContentWidth, minimumContentHeight);
}

HelpWindowController::~HelpWindowController() = default;

void HelpWindowController::buildContent()
{
    juce::StringArray labels{"About"};
    pages.push_back(std::make_unique<HelpAboutPage>(versionLine(mainBundleInformation())));
    for (const auto& page : helpContentPages()) {
        labels.add(page.navLabel);
        pages.push_back(std::make_unique<HelpScrollPage>(page));
    }

    segmented = std::make_unique<SegmentedControl>(labels);
    segmented->setTitle("Page");
    segmented->onChange = [this](int) { segmentChanged(); };
    auto container = std::make_unique<FlippedView>();
    container->setBackground(bgColor);
    pageContainer = std::move(container);
    for (const auto& page : pages)
        pageContainer->addChildComponent(*page);

    content = std::make_unique<ContentView>(*this);
    content->setBackground(bgColor);
    content->addAndMakeVisible(*segmented);
    content->addAndMakeVisible(*pageContainer);
    showPage(0);
}

void HelpWindowController::segmentChanged()
{
    showPage(segmented->selectedSegment());
}

void HelpWindowController::showPage(int index)
{
    if (index < 0 || index >= static_cast<int>(pages.size()))
        return;
    segmented->setSelectedSegment(index);
    for (std::size_t page = 0; page < pages.size(); ++page)
        pages[page]->setVisible(page == static_cast<std::size_t>(index));
}

void HelpWindowController::showWindow(const juce::Component* neighbour)
{
    helpWindow->show(neighbour);
}

HostWindow& HelpWindowController::window() noexcept
{
    return *helpWindow;
}

juce::Component& HelpWindowController::contentView() noexcept
{
    return *content;
}

} // namespace velotrine
