// The Edit menu by mouse, while a field of the application is being edited.

#include "editor/RingEditorViewMac.h"
#include "tests/host/windows/ApplicationTest.h"

namespace velotrine {
namespace {

/// The entries' middles below the menu bar.
enum class Entry
{
    undo = 16,
    redo = 40,
    cut = 73,
    copy = 97,
    paste = 121,
    selectAll = 145,
};

class ApplicationsEditMenu : public ApplicationTest
{
protected:
    void SetUp() override { launchForUse(); }

    void choose(Entry entry)
    {
        click(95, 12); // "Edit"
        click(110, menuBarHeight + static_cast<int>(entry));
    }

    static void type(const std::string& text)
    {
        xdotool({"type", text});
        runMessagesFor(0.2);
    }

    /// Through the menu, too.
    std::string textInField()
    {
        choose(Entry::selectAll);
        juce::SystemClipboard::copyTextToClipboard("nothing was copied");
        choose(Entry::copy);
        return juce::SystemClipboard::getTextFromClipboard().toStdString();
    }

    /// Of the field that has the keyboard.
    void expectThatAllWorks()
    {
        juce::SystemClipboard::copyTextToClipboard("7");
        choose(Entry::selectAll);
        choose(Entry::paste);
        EXPECT_EQ(textInField(), "7") << "pasted over all of it";
        choose(Entry::selectAll);
        choose(Entry::cut);
        EXPECT_EQ(juce::SystemClipboard::getTextFromClipboard(), "7");
        choose(Entry::undo);
        EXPECT_EQ(textInField(), "7") << "undone";
        choose(Entry::redo);
        choose(Entry::paste);
        choose(Entry::paste);
        EXPECT_EQ(textInField(), "77") << "pasted twice into an empty field";
    }

    EditorLayout layout = layoutInWindow();
};

TEST_F(ApplicationsEditMenu, WorksOnTheTempoField)
{
    const auto field = inWindow(layout.bpmField).getCentre();
    click(field.x, field.y);
    expectThatAllWorks();
}

TEST_F(ApplicationsEditMenu, ResumesAnEntryWhereItWas)
{
    const auto field = inWindow(layout.bpmField).getCentre();
    click(field.x, field.y);
    type("9");
    juce::SystemClipboard::copyTextToClipboard("8");
    choose(Entry::paste);
    type("7");
    EXPECT_EQ(textInField(), "987");
}

TEST_F(ApplicationsEditMenu, TheFieldsOwnMenuResumesAnEntryToo)
{
    const auto field = inWindow(layout.bpmField).getCentre();
    click(field.x, field.y);
    type("9");
    juce::SystemClipboard::copyTextToClipboard("8");
    xdotool({"click", "3"});
    runMessagesFor(0.3);
    click(field.x + 40, field.y - 127); // Paste; there is more room above the field than below
    type("7");
    EXPECT_EQ(textInField(), "987");
}

TEST_F(ApplicationsEditMenu, WorksOnTheFieldsOfARingsPanel)
{
    const auto ring = pointOnOutermostRing(inWindow(layout.rings));
    click(ring.x, ring.y);
    const auto panel = inWindow(layout.ringEditor);
    RingEditorViewMac sameSize;
    sameSize.setBounds(panel);
    const auto field = sameSize.field(RingEditorViewMac::luck).getBounds().getCentre() + panel.getPosition();
    click(field.x, field.y);
    expectThatAllWorks();
}

} // namespace
} // namespace velotrine
