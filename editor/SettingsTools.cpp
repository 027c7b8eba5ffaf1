#include "editor/SettingsTools.h"

#include "commandline/Errors.h"
#include "editor/JuceText.h"
#include "takes/SettingsFile.h"
#include "takes/TakeText.h"

#include <utility>

namespace velotrine {

namespace {

constexpr auto stateEnding = ".json";
/// By which a desktop knows a state from other documents; see packaging/desktop/velotrine-mime.xml.
constexpr auto savedEnding = ".velotrine.json";

juce::String filesToOpen()
{
    return juce::String("*") + stateEnding + ";*" + juceText(takeFileEnding);
}

juce::String inQuotes(const juce::File& file)
{
    return file.getFileName().quoted();
}

} // namespace

SettingsTools::SettingsTools(juce::Component& windowContents, SettingsAccess access,
                             std::shared_ptr<UndoHistory> history)
    : settings(std::move(access), std::move(history)),
      menu(settings, {.copy = [this] { copy(); },
                      .paste = [this] { paste(); },
                      .open = [this] { chooseFileToOpen(); },
                      .save = [this] { chooseFileToSave(); },
                      .askForSeed = [this] { askForSeed(); }}),
      contents(windowContents), seedPanel(windowContents)
{
    menu.isBlocked = [this] { return isBlocked(); };
    seedPanel.onSeed = [this](std::uint32_t seed) { settings.setSeed(seed); };
    contents.addChildComponent(notice);
    opensOn(contents);
}

SettingsTools::~SettingsTools()
{
    for (const auto& ground : grounds)
        if (ground != nullptr)
            ground->removeMouseListener(this);
}

void SettingsTools::opensOn(juce::Component& ground)
{
    ground.addMouseListener(this, false);
    grounds.emplace_back(&ground);
}

void SettingsTools::mouseDown(const juce::MouseEvent& event)
{
    if (event.mods.isPopupMenu() && !isBlocked())
        menu.show(*event.eventComponent, juce::Rectangle<int>(1, 1).withPosition(event.getScreenPosition()),
                  false);
}

void SettingsTools::openByKey(juce::Component& owner)
{
    if (!isBlocked())
        menu.show(owner, owner.getScreenBounds().withSizeKeepingCentre(1, 1), true);
}

bool SettingsTools::isBlocked() const
{
    return dialog.isOpen() || (isControlHeld && isControlHeld());
}

bool SettingsTools::keyPressed(const juce::KeyPress& key) const
{
    return menu.keyPressed(key);
}

void SettingsTools::layOut()
{
    notice.placeIn(contents.getLocalBounds());
}

void SettingsTools::copy()
{
    juce::SystemClipboard::copyTextToClipboard(juceText(settings.text()));
    notice.show("The settings are in the clipboard.");
}

void SettingsTools::paste()
{
    const auto text = juce::SystemClipboard::getTextFromClipboard().toStdString();
    const auto error = text.empty() ? std::string("The clipboard holds no text.") : settings.paste(text);
    if (!error.empty())
        notice.show(juceText(error));
}

void SettingsTools::openFile(const juce::File& file)
{
    const auto read = settingsFromFile(file.getFullPathName().toStdString(), settings.now());
    if (!read.settings)
        return notice.show(inQuotes(file) + " is not opened: " + juceText(read.error) + ".");
    settings.change("Open", *read.settings);
    if (read.areOfATake)
        notice.show("These are the settings with which the take " + inQuotes(file) + " begins.");
}

void SettingsTools::chooseFileToOpen()
{
    dialog.open(contents, filesToOpen(), [this](const juce::File& file) { openFile(file); });
}

void SettingsTools::chooseFileToSave()
{
    const auto preset = settings.now().preset;
    const auto name = preset ? juce::String::fromUTF8(preset->name.c_str()) : juce::String("Velotrine");
    const auto wanted = juce::File::createLegalFileName(name + savedEnding);
    dialog.save(contents, juce::String("*") + stateEnding, wanted,
                [this](const juce::File& file) { saveFile(file); });
}

void SettingsTools::saveFile(const juce::File& file)
{
    const auto named = file.getFileExtension().isEmpty() ? file.withFileExtension(savedEnding) : file;
    // The dialog has asked about the name that was typed.
    if (named != file && named.exists())
        return notice.show(inQuotes(named) + " is there already; give its whole name to replace it.");
    try {
        writeSettings(settings.now(), named.getFullPathName().toStdString());
        notice.show("Saved as " + named.getFullPathName());
    } catch (const WorkError& error) {
        notice.show("The settings are not saved: " + juceText(error.what()) + ".");
    }
}

void SettingsTools::askForSeed()
{
    seedPanel.open(settings.now().seed);
}

} // namespace velotrine
