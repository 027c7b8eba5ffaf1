// The settings as a whole in the application itself: undone, copied, pasted, opened and kept.

#include "audiounit/Settings.h"
#include "takes/SettingsFile.h"
#include "tests/host/windows/ApplicationTest.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>

namespace velotrine {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

constexpr auto activity = addressOf(GlobalParameter::activity);
constexpr auto bpm = addressOf(GlobalParameter::bpm);

class ApplicationsSettings : public ApplicationTest
{
protected:
    void SetUp() override
    {
        environment = {{"HOME", folder.path().string()}};
        launchForUse();
    }

    static void press(const std::string& key)
    {
        pressKey(key);
        runMessagesFor(0.1);
    }

    /// For another program to paste.
    static void offer(const std::string& text)
    {
        juce::SystemClipboard::copyTextToClipboard(text);
        // The toolkit tells the window system only when it has something else to say, such as a question.
        EXPECT_EQ(juce::SystemClipboard::getTextFromClipboard(), juce::String(text));
    }

    /// By way of the clipboard, as another program would get it.
    static std::string copied()
    {
        offer("nothing was copied");
        press("ctrl+c");
        juce::String text;
        EXPECT_TRUE(runMessagesUntil(
            [&] {
                text = juce::SystemClipboard::getTextFromClipboard();
                return text.isNotEmpty() && text != "nothing was copied";
            },
            5.0));
        return text.toStdString();
    }

    static Settings settings()
    {
        const auto read = settingsFromText(copied(), {});
        EXPECT_TRUE(read.settings) << read.error;
        return read.settings.value_or(Settings());
    }

    static void paste(const std::string& text)
    {
        offer(text);
        press("ctrl+v");
    }

    /// A notch of the mouse wheel on a knob, which is a step.
    void turn(int knob, const char* way = "4") const
    {
        const auto at = inWindow(layout.knobs.at(static_cast<std::size_t>(knob))).getCentre();
        xdotool({"mousemove", "--window", window(), std::to_string(at.x), std::to_string(at.y)});
        xdotool({"click", way});
        runMessagesFor(0.1);
    }

    void choosePreset(int linesFurtherDown)
    {
        click(240, menuBarHeight + 22);
        for (int i = 0; i < linesFurtherDown; ++i)
            press("Down");
        press("Return");
        runMessagesFor(0.2);
    }

    /// As a power cut would end it.
    void kill()
    {
        application->send(SIGKILL);
        ASSERT_TRUE(ends());
    }

    void start(const std::vector<std::string>& options = {})
    {
        launch(options);
        ASSERT_TRUE(windowHasKeyboard("Velotrine"));
        runMessagesFor(0.3);
    }

    [[nodiscard]] Settings inFile(const std::string& name) const
    {
        const auto read = settingsFromFile(folder.file(name), {});
        EXPECT_TRUE(read.settings) << read.error;
        return read.settings.value_or(Settings());
    }

    static constexpr auto lastSettings = "state/Velotrine/last-settings.json";

    EditorLayout layout = layoutInWindow();
};

TEST_F(ApplicationsSettings, TenThingsAreUndoneToTheStartAndDoneAgainToTheEnd)
{
    const auto start = copied();
    for (int knob = 0; knob < 4; ++knob)
        turn(knob);
    choosePreset(3);
    for (int knob = 0; knob < 4; ++knob)
        turn(knob, "5");
    const auto field = inWindow(layout.bpmField).getCentre();
    click(field.x, field.y);
    xdotool({"type", "77"});
    press("Return");
    const auto end = copied();
    EXPECT_THAT(end, HasSubstr("Lobster Quadrille"));
    EXPECT_THAT(end, HasSubstr("\"bpm\": 77"));

    for (int i = 0; i < 10; ++i)
        press("ctrl+z");
    EXPECT_EQ(copied(), start);
    press("ctrl+z");
    EXPECT_EQ(copied(), start) << "there is nothing more";
    for (int i = 0; i < 10; ++i)
        press(i % 2 == 0 ? "ctrl+shift+z" : "ctrl+y");
    EXPECT_EQ(copied(), end);
}

TEST_F(ApplicationsSettings, TheEditMenuUndoesToo)
{
    const auto start = copied();
    turn(0);
    EXPECT_NE(copied(), start);
    click(95, 12); // "Edit"
    click(110, menuBarHeight + 16);
    EXPECT_EQ(copied(), start);
}

TEST_F(ApplicationsSettings, WhileAFieldIsEditedTheKeysBelongToItsText)
{
    turn(0);
    const auto before = settings();
    const auto field = inWindow(layout.bpmField).getCentre();
    click(field.x, field.y);
    xdotool({"type", "9"});
    for (const auto* const key : {"ctrl+z", "ctrl+z", "ctrl+shift+z"})
        press(key);
    xdotool({"type", "8"});
    press("Return");
    const auto after = settings();
    EXPECT_EQ(after.values[activity], before.values[activity]);
    EXPECT_EQ(after.values[bpm], 98.0f);
}

TEST_F(ApplicationsSettings, TextThatIsNoStateChangesNothingAndTheWindowSaysWhy)
{
    turn(0);
    const auto quiet = picture();
    paste("good morning");
    const auto loud = picture();
    EXPECT_NE(quiet.getPixelAt(180, 400), loud.getPixelAt(180, 400)) << "where notices stand";
    EXPECT_EQ(settings().values[activity], 0.01f);
    press("ctrl+z");
    EXPECT_EQ(settings().values[activity], 0.0f) << "the paste was no step";
}

TEST_F(ApplicationsSettings, AStateIsPastedAndItsPresetShows)
{
    const auto start = copied();
    paste(
        R"({"version": 1, "preset": {"number": 7, "name": "Wind Chimes"}, "parameters": {"activity": 0.25}})");
    const auto pasted = settings();
    EXPECT_EQ(pasted.values[activity], 0.25f);
    EXPECT_EQ(pasted.preset->name, "Wind Chimes");
    choosePreset(1); // the pop-up opens at the chosen one
    EXPECT_EQ(settings().preset->name, "Chocolate Starfish");
    press("ctrl+z");
    EXPECT_EQ(settings(), pasted);
    press("ctrl+z");
    EXPECT_EQ(copied(), start);
}

TEST_F(ApplicationsSettings, GoBackToWhereTheyWereWhenItWasKilled)
{
    const auto start = settings();
    EXPECT_FALSE(fs::exists(folder.file(lastSettings))) << "nothing has been changed";
    turn(0);
    turn(2);
    const auto where = settings();
    runMessagesFor(1.0);
    kill();
    EXPECT_EQ(inFile(lastSettings), where);

    this->start();
    EXPECT_EQ(settings(), start) << "nothing is applied by itself";
    runMessagesFor(1.0);
    EXPECT_EQ(inFile(lastSettings), where) << "looking at it changes nothing";
    press("shift+F10");
    for (const auto* const key : {"Up", "Up", "Return"}) // the last entry but one
        press(key);
    EXPECT_EQ(settings(), where);
    press("ctrl+z");
    EXPECT_EQ(settings(), start);
}

TEST_F(ApplicationsSettings, AreKeptAtAnOrderlyEndToo)
{
    turn(1);
    const auto where = settings();
    press("ctrl+q");
    EXPECT_EQ(end().exitCode, 0);
    EXPECT_EQ(inFile(lastSettings), where);
}

TEST_F(ApplicationsSettings, OfASessionComeBackByThemselvesAfterAKill)
{
    kill();
    start({"--session", folder.file("studio.json")});
    turn(0);
    choosePreset(3);
    turn(1);
    const auto where = settings();
    EXPECT_EQ(where.preset->name, "Lobster Quadrille");
    runMessagesFor(1.0);
    kill();
    EXPECT_EQ(inFile("studio.json"), where);
    EXPECT_EQ(fs::path(folder.file("studio.json")).extension(), ".json");

    start({"--session", folder.file("studio.json")});
    EXPECT_EQ(settings(), where);
    press("ctrl+z");
    EXPECT_EQ(settings(), where) << "a session's beginning is no edit";
    choosePreset(1); // the pop-up opens at the session's preset
    EXPECT_EQ(settings().preset->name, "Precession");
    press("ctrl+q");
    EXPECT_EQ(end().exitCode, 0);
    EXPECT_EQ(inFile("studio.json").preset->name, "Precession");
}

TEST_F(ApplicationsSettings, OfASessionThatIsNoStateAreRefusedAndTheFileStays)
{
    kill();
    folder.write("bad.json", "good morning");
    folder.write("some.velotrine-take", R"({"version": 1, "changes": []})");
    for (const auto* const name : {"bad.json", "some.velotrine-take"}) {
        const auto before = folder.read(name);
        const auto ended = runProcess({VELOTRINE_HOST_PROGRAM, "--session", folder.file(name)});
        EXPECT_EQ(ended.exitCode, 2);
        EXPECT_THAT(ended.err,
                    testing::StartsWith("VelotrineHostMac: --session " + folder.file(name) + ": it is "));
        EXPECT_EQ(std::ranges::count(ended.err, '\n'), 1) << ended.err;
        EXPECT_EQ(folder.read(name), before);
    }
}

TEST_F(ApplicationsSettings, OfAFileOnTheCommandLineAreOpened)
{
    kill();
    folder.write("calm.json", R"({"version": 1, "parameters": {"activity": 0.75}})");
    start({folder.file("calm.json")});
    EXPECT_EQ(settings().values[activity], 0.75f);
    press("ctrl+z");
    EXPECT_EQ(settings().values[activity], 0.0f) << "which can be undone";
    kill();

    folder.write("bad.json", "good morning");
    start({folder.file("bad.json")});
    const auto loud = picture();
    EXPECT_EQ(settings().preset->name, "Default");
    EXPECT_NE(loud.getPixelAt(180, 400), loud.getPixelAt(5, 150)) << "the window says why";
}

TEST_F(ApplicationsSettings, AreSavedAndOpenedByKey)
{
    turn(0);
    const auto saved = settings();
    press("shift+F10");
    for (int i = 0; i < 4; ++i) // Undo is marked; Redo cannot be
        press("Down");
    press("Return");
    runMessagesFor(0.5);
    xdotool({"type", "mine"}); // over the name that is there
    press("Return");
    ASSERT_TRUE(runMessagesUntil([&] { return fs::exists(folder.file("mine.velotrine.json")); }, 5.0));
    EXPECT_EQ(inFile("mine.velotrine.json"), saved);

    turn(0, "5");
    turn(2);
    press("shift+F10");
    for (int i = 0; i < 3; ++i)
        press("Down");
    press("Return");
    runMessagesFor(0.5);
    xdotool({"type", "mine.velotrine.json"});
    press("Return");
    runMessagesFor(0.5);
    EXPECT_EQ(settings(), saved);
}

TEST_F(ApplicationsSettings, TheContextMenuOpensByKeyAndByMouse)
{
    const auto start = copied();
    const auto ground = inWindow(layout.rings).getTopLeft().translated(4, 4);
    turn(0);
    press("shift+F10");
    press("Return"); // the first entry is marked
    EXPECT_EQ(copied(), start);
    press("Menu");
    press("Return"); // of what can be chosen, "Redo" is now the first
    EXPECT_NE(copied(), start);
    xdotool({"mousemove", "--window", window(), std::to_string(ground.x), std::to_string(ground.y)});
    xdotool({"click", "3"});
    runMessagesFor(0.3);
    press("Down");
    press("Return");
    EXPECT_EQ(copied(), start);
}

} // namespace
} // namespace velotrine
