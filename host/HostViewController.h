#pragma once

#include "editor/FlippedView.h"
#include "editor/VelotrineAUViewControllerMac.h"
#include "editor/ViewController.h"
#include "host/AVAudioEngine.h"
#include "host/AVAudioUnit.h"
#include "host/HelpWindowController.h"
#include "host/Manual.h"
#include "host/PopUpButton.h"
#include "host/Preferences.h"
#include "host/SettingsKeeper.h"
#include "host/StateFolder.h"
#include "host/TakeKeeper.h"
#include "host/WrappingLabel.h"
#include "render/TakeFiles.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace velotrine {

/// What the host reaches for outside itself.
struct HostSurroundings
{
    using Instantiate =
        std::function<void(const AudioComponentDescription&, AudioComponentInstantiationOptions,
                           const AVAudioUnit::Completion&)>;

    DeviceTypeFactory deviceTypes = systemDeviceTypes;
    Instantiate instantiate = AVAudioUnit::instantiate; ///< may complete later, and on any thread
    juce::File preferencesFile = Preferences::defaultFile();
    TakePlaces takePlaces = TakePlaces::ofUser();
    TakeKeeper::Writer takeWriter = writeTakeFiles;
    juce::File lastSettingsFile = stateFolder().getChildFile("last-settings.json"); ///< of the run before
    juce::File fileToOpen{};                          ///< at the start; none if it is empty
    juce::File sessionFile{};                         ///< likewise, and kept up to date
    std::filesystem::path manual = installedManual(); ///< empty for none
};

/// The content of the main window: the instrument, played through the system's audio output, its editor
/// below a bar with its presets and help. Owned by shared pointers only. Main thread.
class HostViewController final : public ViewController,
                                 public std::enable_shared_from_this<HostViewController>
{
public:
    explicit HostViewController(HostSurroundings surroundings = {});
    ~HostViewController() override;

    /// Opens the help window at a page; an index that is no page's leaves the page as it was.
    void showHelp(int page);

    /// Writes everything since the instrument last began to play to files, and says in the window where.
    void keepLastTake() const;

    /// What the context menu has under a key at this moment; see SettingsMenu.
    [[nodiscard]] std::optional<SettingsMenu::Entry> settingsEntry(const juce::KeyPress& key) const;

    /// The help window has just been made. It is made once.
    std::function<void(HelpWindowController&)> onHelpWindowCreated;

    std::unique_ptr<TakeKeeper> takeKeeper; ///< the engine plays to it, and goes away before it
    AVAudioEngine engine;
    std::shared_ptr<AVAudioUnit> avAudioUnit;
    std::shared_ptr<AUAudioUnit> audioUnit;
    std::unique_ptr<FlippedView> topBar;
    std::unique_ptr<PopUpButton> presetPopup;
    std::unique_ptr<juce::TextButton> helpButton;
    std::unique_ptr<FlippedView> auContainerView;
    std::unique_ptr<VelotrineAUViewControllerMac> auViewController;
    std::unique_ptr<HelpWindowController> helpWindowController;

    /// Says that there is nothing to hear; hidden while there is.
    std::unique_ptr<WrappingLabel> noDeviceLabel;

protected:
    void loadView() override;
    void viewDidLoad() override;
    void viewDidLayout() override;
    void viewDidAppear() override;

private:
    void buildTopBar();
    void buildContainer();
    void instantiateAudioUnit();
    void audioUnitArrived(std::shared_ptr<AVAudioUnit> node);
    void rememberTakes();
    void startEngine();
    void forceSyncOff();
    void fillPresetPopup();
    void presetChosen();
    void applyPreset(const AUAudioUnitPreset& preset);
    void showChosenPreset();
    void embedEditor();
    void beginSession();
    void keepSettings();
    void offerWhatWasLeft();
    [[nodiscard]] std::vector<SettingsMenu::Entry> menuEntries();
    void readManual() const;
    void say(const juce::String& text, bool goesOn = false) const;
    void helpTapped();
    void updateDeviceLabel() const;

    HostSurroundings around;
    Preferences preferences;
    std::vector<AUAudioUnitPreset> presetOfItem; ///< by the pop-up's item index
    std::optional<Settings> lastSettings;        ///< of the run before, if they can be brought back
    std::vector<std::unique_ptr<SettingsKeeper>> settingsKeepers;
};

} // namespace velotrine
