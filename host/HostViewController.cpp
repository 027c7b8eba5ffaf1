#include "host/HostViewController.h"

#include "audiounit/VelotrineComponent.h"
#include "editor/Colours.h"
#include "editor/Control.h"
#include "editor/FileDropView.h"
#include "editor/FontLoader.h"
#include "editor/JuceText.h"
#include "engine/FatalError.h"
#include "engine/ParameterAddress.h"
#include "takes/SettingsFile.h"

#include <algorithm>
#include <iostream>
#include <utility>

namespace velotrine {

namespace {

// In points.
constexpr int initialWidth = 480;
constexpr int initialHeight = 404;
constexpr int topBarHeight = 44;
constexpr int controlInset = 8;
constexpr int controlHeight = 28;
constexpr int helpButtonWidth = 56;
constexpr int widestPresetPopup = 220;

constexpr auto backEntry = "Back to Where I Was";

const juce::Colour& hostBackgroundGrey()
{
    static const auto colour = grey(0.25f);
    return colour;
}

std::unique_ptr<FlippedView> makeView()
{
    auto view = std::make_unique<FlippedView>();
    view->setBackground(hostBackgroundGrey());
    return view;
}

void printInstantiationFailure(const std::optional<AUError>& error)
{
    std::cout << "Failed to instantiate AU: " << (error ? error->what() : "unknown") << std::endl;
}

} // namespace

HostViewController::HostViewController(HostSurroundings surroundings)
    : engine(surroundings.deviceTypes), around(std::move(surroundings)), preferences(around.preferencesFile)
{}

HostViewController::~HostViewController()
{
    settingsKeepers.clear();
    unloadView();
}

void HostViewController::loadView()
{
    auto root = std::make_unique<FileDropView>();
    root->setBackground(hostBackgroundGrey());
    root->onFileDropped = [this](const juce::File& file) {
        if (auViewController)
            auViewController->tools->openFile(file);
    };
    root->setSize(initialWidth, initialHeight);
    setView(std::move(root));
}

void HostViewController::viewDidLoad()
{
    buildTopBar();
    buildContainer();
    instantiateAudioUnit();
}

void HostViewController::buildTopBar()
{
    topBar = makeView();
    view().addAndMakeVisible(*topBar);

    presetPopup = std::make_unique<PopUpButton>();
    presetPopup->setTitle("Preset");
    presetPopup->setTextWhenNothingSelected({});
    topBar->addAndMakeVisible(*presetPopup);

    helpButton = std::make_unique<ControlButton<juce::TextButton>>("?");
    helpButton->setTitle("Help");
    helpButton->onClick = [this] { helpTapped(); };
    topBar->addAndMakeVisible(*helpButton);

    noDeviceLabel = std::make_unique<WrappingLabel>("no audio device", systemFont(11.0f), grey(1.0f, 0.55f));
    topBar->addChildComponent(*noDeviceLabel);
}

void HostViewController::buildContainer()
{
    auContainerView = makeView();
    view().addAndMakeVisible(*auContainerView);
}

void HostViewController::instantiateAudioUnit()
{
    registerVelotrineComponent();
    around.instantiate(velotrineComponentDescription(), AudioComponentInstantiationOptions::loadInProcess,
                       [weakSelf = weak_from_this()](std::shared_ptr<AVAudioUnit> node,
                                                     const std::optional<AUError>& error) {
                           if (weakSelf.expired() || !node)
                               return printInstantiationFailure(error);
                           // A message that is never read must not keep windows beyond their desktop.
                           juce::MessageManager::callAsync([weakSelf, node = std::move(node)] {
                               if (const auto self = weakSelf.lock())
                                   self->audioUnitArrived(node);
                           });
                       });
}

void HostViewController::audioUnitArrived(std::shared_ptr<AVAudioUnit> node)
{
    avAudioUnit = std::move(node);
    audioUnit = avAudioUnit->audioUnit();
    rememberTakes();
    startEngine();
    forceSyncOff();
    fillPresetPopup();
    embedEditor();
    if (auViewController) {
        beginSession();
        keepSettings();
        offerWhatWasLeft();
    }
}

void HostViewController::rememberTakes()
{
    const auto instrument = std::dynamic_pointer_cast<VelotrineAudioUnit>(audioUnit);
    if (!instrument)
        return;
    takeKeeper = std::make_unique<TakeKeeper>(around.takePlaces, around.takeWriter);
    takeKeeper->onNotice = [this](const juce::String& text, bool goesOn) { say(text, goesOn); };
    engine.onCycleRendered = [keeper = takeKeeper.get(), kernel = instrument->dspKernel](int frames) {
        keeper->note(*kernel, frames);
    };
}

/// What nobody has asked to be brought back stays where it is.
void HostViewController::offerWhatWasLeft()
{
    juce::StringArray offers;
    if (lastSettings)
        offers.add(juce::String(backEntry) +
                   ", in the menu of the secondary button, brings back your last settings.");
    const auto hasTake = takeKeeper && takeKeeper->hasTakesLeftBehind();
    if (hasTake)
        offers.add("There is a take from a time when Velotrine ended without warning. Ctrl+K keeps it.");
    if (!offers.isEmpty() && !auViewController->tools->notice.isVisible())
        say(offers.joinIntoString("\n"), hasTake);
}

/// The session that the user names, and the file to open, come after the first preset.
void HostViewController::beginSession()
{
    auto& tools = *auViewController->tools;
    const auto session = around.sessionFile;
    if (session.existsAsFile()) {
        const auto read = settingsFromFile(session.getFullPathName().toStdString(), tools.settings.now());
        if (read.settings) {
            audioUnit->setFullState(stateFromSettings(*read.settings));
            forceSyncOff();
            showChosenPreset();
        } else {
            say("The session is not kept: " + juce::String(read.error) + ".", true);
            around.sessionFile = juce::File();
        }
    }
    if (around.fileToOpen != juce::File())
        tools.openFile(around.fileToOpen);
}

void HostViewController::keepSettings()
{
    auto& settings = auViewController->tools->settings;
    const auto now = settings.now();
    const auto read = [&settings] { return settings.now(); };
    const auto last = settingsFromFile(around.lastSettingsFile.getFullPathName().toStdString(), now);
    if (last.settings != now)
        lastSettings = last.settings;
    settingsKeepers.push_back(std::make_unique<SettingsKeeper>(around.lastSettingsFile, read, now));
    if (around.sessionFile == juce::File())
        return;
    settingsKeepers.push_back(std::make_unique<SettingsKeeper>(around.sessionFile, read, std::nullopt));
    settingsKeepers.back()->onFailure = [this](const juce::String& reason) {
        say("The session is not kept: " + reason + ".", true);
    };
}

void HostViewController::keepLastTake() const
{
    if (takeKeeper)
        takeKeeper->keepLastTake(presetPopup->getText());
}

void HostViewController::startEngine()
{
    engine.attach(avAudioUnit);
    engine.connect(avAudioUnit, engine.mainMixerNode(), std::nullopt);
    engine.onDeviceChanged = [this] { updateDeviceLabel(); };
    if (const auto error = engine.start())
        std::cout << "Engine start error: " << error->what() << std::endl;
    updateDeviceLabel();
}

void HostViewController::forceSyncOff()
{
    const auto tree = audioUnit ? audioUnit->parameterTree() : nullptr;
    if (!tree)
        return;
    if (const auto sync = tree->parameterWithAddress(addressOf(GlobalParameter::sync)))
        sync->setValue(0.0f);
}

void HostViewController::fillPresetPopup()
{
    if (!audioUnit)
        return;
    presetOfItem = audioUnit->factoryPresets();
    presetPopup->clear(juce::dontSendNotification);
    for (const auto& preset : presetOfItem)
        presetPopup->addItem(preset.name, presetPopup->getNumItems() + 1);
    presetPopup->onChange = [this] { presetChosen(); };
    if (presetOfItem.empty())
        return;
    applyPreset(presetOfItem.front());
    presetPopup->setSelectedItemIndex(0, juce::dontSendNotification);
}

void HostViewController::presetChosen()
{
    const auto index = presetPopup->getSelectedItemIndex();
    if (index < 0)
        return;
    const auto& preset = presetOfItem.at(static_cast<std::size_t>(index));
    const auto apply = [this, &preset] { applyPreset(preset); };
    if (auViewController)
        auViewController->tools->settings.changeBy(presetStepName(preset.name), apply);
    else
        apply();
}

/// After something else than the pop-up has chosen it.
void HostViewController::showChosenPreset()
{
    const auto chosen = audioUnit->currentPreset();
    const auto found = std::ranges::find_if(presetOfItem, [&chosen](const AUAudioUnitPreset& preset) {
        return chosen && preset.number == chosen->number;
    });
    const auto index = found != presetOfItem.end() ? static_cast<int>(found - presetOfItem.begin()) : -1;
    presetPopup->setSelectedItemIndex(index, juce::dontSendNotification);
}

void HostViewController::applyPreset(const AUAudioUnitPreset& preset)
{
    audioUnit->setCurrentPreset(preset);
    forceSyncOff();
}

void HostViewController::embedEditor()
{
    auto instrument = std::dynamic_pointer_cast<VelotrineAudioUnit>(audioUnit);
    if (!instrument)
        return;
    auViewController = std::make_unique<VelotrineAUViewControllerMac>();
    auViewController->audioUnit = std::move(instrument);
    auViewController->hostProvidesSync = false;
    auto& editor = auViewController->view();
    auto& tools = *auViewController->tools;
    tools.settings.onReplaced = [this] { showChosenPreset(); };
    tools.menu.hasPresets = false; // the bar above has them
    tools.menu.furtherEntries = [this] { return menuEntries(); };
    tools.opensOn(*topBar);
    editor.setBounds(auContainerView->getLocalBounds());
    auContainerView->addAndMakeVisible(editor);
}

std::vector<SettingsMenu::Entry> HostViewController::menuEntries()
{
    const auto goBack = [this] {
        if (lastSettings)
            auViewController->tools->settings.change(backEntry, *lastSettings);
    };
    std::vector<SettingsMenu::Entry> entries{
        {.title = backEntry, .perform = goBack, .isEnabled = lastSettings.has_value()},
        {.title = "Keep the Last Take",
         .key = juce::KeyPress('k', juce::ModifierKeys::commandModifier, 0),
         .perform = [this] { keepLastTake(); }}};
    if (!around.manual.empty())
        entries.push_back({.title = "Read the Manual", .perform = [this] { readManual(); }});
    return entries;
}

void HostViewController::readManual() const
{
    if (!showInBrowser(around.manual))
        say("The manual is " + juceText(around.manual.string()));
}

std::optional<SettingsMenu::Entry> HostViewController::settingsEntry(const juce::KeyPress& key) const
{
    return auViewController ? auViewController->tools->menu.entryFor(key) : std::nullopt;
}

void HostViewController::say(const juce::String& text, bool goesOn) const
{
    if (auViewController)
        auViewController->tools->notice.show(text, goesOn);
}

void HostViewController::viewDidLayout()
{
    if (!topBar || !auContainerView || !helpButton || !presetPopup)
        fatalError("the host's view is laid out before it is built");
    const auto bounds = view().getLocalBounds();
    const auto width = bounds.getWidth();
    topBar->setBounds(bounds.withHeight(topBarHeight));
    auContainerView->setBounds(bounds.withTop(topBarHeight));
    if (auViewController)
        auViewController->view().setBounds(auContainerView->getLocalBounds());
    helpButton->setBounds(width - controlInset - helpButtonWidth, controlInset, helpButtonWidth,
                          controlHeight);
    const auto popupWidth = juce::jmin(width / 2, widestPresetPopup);
    presetPopup->setBounds((width - popupWidth) / 2, controlInset, popupWidth, controlHeight);

    const auto labelWidth = presetPopup->getX() - 2 * controlInset;
    noDeviceLabel->setBounds(
        juce::Rectangle<int>(controlInset, 0, labelWidth, topBarHeight)
            .withSizeKeepingCentre(labelWidth, noDeviceLabel->heightForWidth(labelWidth)));
}

void HostViewController::updateDeviceLabel() const
{
    noDeviceLabel->setVisible(!engine.hasDevice());
}

void HostViewController::viewDidAppear()
{
    if (preferences.hasShownHelp())
        return;
    preferences.setHasShownHelp(true);
    // The window that appears comes to the front; help comes after it, to be in front of it.
    juce::MessageManager::callAsync([weakSelf = weak_from_this()] {
        if (const auto self = weakSelf.lock())
            self->showHelp(0);
    });
}

void HostViewController::helpTapped()
{
    showHelp(0);
}

void HostViewController::showHelp(int page)
{
    if (!helpWindowController) {
        helpWindowController = std::make_unique<HelpWindowController>();
        if (onHelpWindowCreated)
            onHelpWindowCreated(*helpWindowController);
    }
    // The page first, so that the window does not open on another.
    helpWindowController->showPage(page);
    helpWindowController->showWindow(&view());
}

} // namespace velotrine
