// Files that are dropped on the window.

#include "takes/SettingsFile.h"
#include "tests/host/windows/Hands.h"

#include <gmock/gmock.h>

namespace velotrine {
namespace {

class Dropped : public Hands
{
protected:
    /// As the window system hands it over.
    void drop(const std::string& name, juce::Point<int> at)
    {
        juce::ComponentPeer::DragInfo dragged;
        dragged.files.add(folder.file(name));
        dragged.position = at;
        auto& peer = *window->getPeer();
        EXPECT_TRUE(peer.handleDragMove(dragged)) << name;
        EXPECT_TRUE(peer.handleDragDrop(dragged)) << name;
        runMessagesFor(0.2);
    }

    [[nodiscard]] juce::Point<int> middleOf(const juce::Component& component) const
    {
        return window->getLocalPoint(&component, component.getLocalBounds().getCentre());
    }

    [[nodiscard]] std::string notice() const { return editor().tools->notice.text().toStdString(); }
};

TEST_F(Dropped, AStateIsAppliedWhereverItFalls)
{
    auto settings = editor().tools->settings.now();
    int number = 0;
    for (const auto* const ground : std::initializer_list<const juce::Component*>{
             editor().circlesView.get(), editor().boredomKnob.get(), host->topBar.get()}) {
        settings.values[activity] = 0.1f * static_cast<float>(++number);
        writeSettings(settings, folder.file("some.json"));
        drop("some.json", middleOf(*ground));
        EXPECT_EQ(value(activity), settings.values[activity]) << number;
    }
    keys({"ctrl+z"});
    EXPECT_EQ(value(activity), 0.2f);
}

TEST_F(Dropped, OfATakeTheBeginningIsAppliedAndTheWindowSaysSo)
{
    folder.write("some.velotrine-take",
                 R"({"version": 1, "start": {"parameters": {"activity": 0.25}}, "changes": []})");
    drop("some.velotrine-take", middleOf(*editor().circlesView));
    EXPECT_EQ(value(activity), 0.25f);
    EXPECT_THAT(notice(), testing::HasSubstr("begins"));
}

TEST_F(Dropped, ABadFileChangesNothingAndTheWindowSaysWhy)
{
    folder.write("bad.json", "good morning");
    const auto before = editor().tools->settings.now();
    drop("bad.json", middleOf(*editor().circlesView));
    EXPECT_EQ(editor().tools->settings.now(), before);
    EXPECT_THAT(notice(), testing::StartsWith("\"bad.json\" is not opened: "));
    EXPECT_TRUE(editor().tools->notice.isVisible());
}

} // namespace
} // namespace velotrine
