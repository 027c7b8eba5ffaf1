#pragma once

#include "audiounit/VelotrineAudioUnit.h"
#include "editor/AURotaryControl.h"
#include "editor/ChangedParameters.h"
#include "editor/ChoiceButton.h"
#include "editor/ClickOutside.h"
#include "editor/ConcentricCirclesViewMac.h"
#include "editor/EditorButton.h"
#include "editor/ParameterWriter.h"
#include "editor/RingEditorViewMac.h"
#include "editor/SettingsTools.h"
#include "editor/Stepper.h"
#include "editor/UnitObserver.h"
#include "editor/ValueField.h"
#include "editor/VelotrineLookAndFeel.h"
#include "editor/ViewController.h"

#include <memory>
#include <optional>

namespace velotrine {

/// The instrument's editor: keeps its controls in step with the unit's parameters, whoever writes them, and
/// turns the user's edits into parameter writes. Main thread; the observers that it registers may be told on
/// any.
class VelotrineAUViewControllerMac final : public ViewController
{
public:
    VelotrineAUViewControllerMac();
    ~VelotrineAUViewControllerMac() override;

    /// Makes the unit for this editor and connects it with the views if they are there already.
    /// Throws AUError when the unit cannot be made.
    std::shared_ptr<VelotrineAudioUnit> createAudioUnit(const AudioComponentDescription& description);

    /// The unit that this editor controls. Set it before the view is first asked for, or let
    /// createAudioUnit() make it.
    std::shared_ptr<VelotrineAudioUnit> audioUnit;

    /// How the settings are edited as a whole, if not directly on the unit. Set it before the view is first
    /// asked for.
    std::optional<SettingsAccess> settingsAccess;

    /// What can be undone; may be shared with the editor that comes after this one.
    std::shared_ptr<UndoHistory> history = std::make_shared<UndoHistory>();

    /// Whether the host supplies tempo and transport; where it does not, sync is forced off.
    bool hostProvidesSync = true;

    /// Small and dim beside the transport controls: why nothing sounds. Empty for nothing.
    void setTransportNotice(const juce::String& notice);

    /// Reads every parameter again.
    void refreshControls() { refresh(AddressSet::all()); }

    // The user's actions.
    void showRingEditor(int ring);
    void dismissRingEditor();
    void pickRoot(int root);
    void pickScale(int scale);
    void playTapped();
    void syncTapped();
    void bpmStepperChanged();
    void bpmEntryEnded(const juce::String& text);

    // The views, from the time that the root view is loaded.
    std::unique_ptr<AURotaryControl> activityKnob;
    std::unique_ptr<AURotaryControl> boredomKnob;
    std::unique_ptr<AURotaryControl> caloriesKnob;
    std::unique_ptr<AURotaryControl> drudgeryKnob;
    std::unique_ptr<ConcentricCirclesViewMac> circlesView;
    std::unique_ptr<RingEditorViewMac> ringEditor; ///< hidden until a ring is selected
    std::unique_ptr<juce::Label> scaleLabel;
    std::unique_ptr<ChoiceButton> rootButton;
    std::unique_ptr<ChoiceButton> scaleButton;
    std::unique_ptr<EditorButton> playButton;
    std::unique_ptr<EditorButton> syncButton;
    std::unique_ptr<juce::Label> syncTextLabel;
    std::unique_ptr<juce::Label> bpmPrefixLabel;
    std::unique_ptr<ValueField> bpmField;
    std::unique_ptr<Stepper> bpmStepper;
    std::unique_ptr<juce::Label> noticeLabel;
    std::unique_ptr<SettingsTools> tools;

    double knobSize = 80.0; ///< points
    double fontSize_cached = 12.0;
    double portraitTransportBottomY = 0.0;
    bool isPlaying = false; ///< the internal clock runs

protected:
    void loadView() override;
    void viewDidLoad() override;
    void viewDidLayout() override;
    void viewWillAppear() override;

private:
    std::unique_ptr<AURotaryControl> makeKnob(GlobalParameter parameter, const juce::String& name,
                                              AURotaryControl::ImageProvider underlay);
    void makeKnobs();
    void makeScaleRow();
    void makeTransport();
    void makeRingEditor();
    void makeTools();
    [[nodiscard]] SettingsAccess accessToSettings() const;
    void connectToAudioUnit();

    void write(ParameterAddress address, float value);

    void openRingByKey(int ring);
    void placeRingEditor();
    void setFocusOrder() const;

    /// Escape closes the ring's panel; space plays and stops where no host wants that key.
    bool keyPressed(const juce::KeyPress& key);

    /// Reads these parameters again, and nothing that it shows is written back.
    void refresh(AddressSet changed);
    void refreshGlobal(GlobalParameter parameter);
    void refreshRing(int ring);
    void refreshRingEditor();
    void refreshSyncDependentControls();
    void showTempo(float bpm) const;

    juce::SharedResourcePointer<DefaultLook> look;
    ParameterWriter parameters;
    std::shared_ptr<ChangedParameters> changedParameters;
    juce::Rectangle<int> ringEditorPlace; ///< where the layout puts the panel
    ClickOutside dismissClick;            ///< enabled while the ring's panel shows
    std::unique_ptr<UnitObserver> unitObserver;
    bool isRefreshing = false;
};

} // namespace velotrine
