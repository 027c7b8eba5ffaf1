#pragma once

#include "audiounit/VelotrineAudioUnit.h"
#include "editor/AURotaryControl.h"
#include "editor/ConcentricCirclesViewMac.h"
#include "editor/EditorButton.h"
#include "editor/RingEditorViewMac.h"
#include "editor/Stepper.h"
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

    /// Whether the host supplies tempo and transport; where it does not, sync is forced off.
    bool hostProvidesSync = true;

    /// Small and dim beside the transport controls: why nothing sounds. Empty for nothing.
    void setTransportNotice(const juce::String& notice);

    /// Reads every parameter again.
    void refreshControls();

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
    std::unique_ptr<EditorButton> rootButton;
    std::unique_ptr<EditorButton> scaleButton;
    std::unique_ptr<EditorButton> playButton;
    std::unique_ptr<EditorButton> syncButton;
    std::unique_ptr<juce::Label> syncTextLabel;
    std::unique_ptr<juce::Label> bpmPrefixLabel;
    std::unique_ptr<ValueField> bpmField;
    std::unique_ptr<Stepper> bpmStepper;
    std::unique_ptr<juce::Label> noticeLabel;

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
    class RootView;
    class DismissClick;
    class RefreshRequest;

    std::unique_ptr<AURotaryControl> makeKnob(GlobalParameter parameter, const juce::String& name,
                                              AURotaryControl::ImageProvider underlay);
    void makeKnobs();
    void makeScaleRow();
    void makeTransport();
    void makeRingEditor();
    void connectToAudioUnit();
    void disconnectFromAudioUnit();

    [[nodiscard]] float parameterValue(ParameterAddress address, float missing) const;
    void writeParameter(ParameterAddress address, float value);
    void sendEvent(ParameterAddress address, float value, AUParameterAutomationEventType type);
    void holdParameter(ParameterAddress address);
    void letGoOfParameter(ParameterAddress address);

    void refreshRings();
    void refreshRingEditor();
    void refreshSyncDependentControls();
    void showTempo(float bpm);
    void openMenu(EditorButton& button, std::span<const std::string_view> names, int current,
                  std::function<void(int)> picked);

    juce::SharedResourcePointer<VelotrineLookAndFeel> lookAndFeel;
    std::shared_ptr<RefreshRequest> refreshRequest;
    std::unique_ptr<DismissClick> dismissClick;
    std::shared_ptr<AUParameterTree> observedTree;
    AUParameterObserverToken paramObserverToken = 0;
    ObserverToken fullStateToken = 0;
    ObserverToken currentPresetToken = 0;
    std::optional<ParameterAddress> heldParameter; ///< whose control is under the mouse now
    bool isRefreshing = false;
};

} // namespace velotrine
