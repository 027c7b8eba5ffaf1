#include "editor/VelotrineAUViewControllerMac.h"

#include "audiounit/ParameterText.h"
#include "audiounit/Parameters.h"
#include "editor/Colours.h"
#include "editor/EditorLayout.h"
#include "editor/EditorRootView.h"
#include "editor/FontLoader.h"
#include "editor/JuceText.h"
#include "editor/KnobsStyleKit.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace velotrine {

namespace {

constexpr int initialWidth = 480;
constexpr int initialHeight = 360;
constexpr float knobReset = 0.5f;
constexpr float noticeFontScale = 0.7f;

const ParameterInfo& tempoInfo()
{
    return parameterTable()[addressOf(GlobalParameter::bpm)];
}

std::unique_ptr<juce::Label> makeLabel(const juce::String& text)
{
    auto label = std::make_unique<juce::Label>(juce::String(), text);
    label->setColour(juce::Label::textColourId, colours::text);
    label->setBorderSize({});
    label->setMinimumHorizontalScale(1.0f);
    label->setInterceptsMouseClicks(false, false);
    return label;
}

/// On whole points, so that lines and letters are sharp.
void place(juce::Component& component, juce::Rectangle<double> bounds)
{
    component.setBounds(bounds.toNearestInt());
}

} // namespace

VelotrineAUViewControllerMac::VelotrineAUViewControllerMac()
    : parameters([this] { return audioUnit ? audioUnit->parameterTree() : nullptr; }),
      changedParameters(std::make_shared<ChangedParameters>([this](AddressSet changed) { refresh(changed); }))
{
    dismissClick.onClick = [this] { dismissRingEditor(); };
}

VelotrineAUViewControllerMac::~VelotrineAUViewControllerMac()
{
    changedParameters->cancel();
    unitObserver.reset();
    if (isViewLoaded())
        view().removeMouseListener(&dismissClick);
    unloadView();
}

std::shared_ptr<VelotrineAudioUnit> VelotrineAUViewControllerMac::createAudioUnit(
    const AudioComponentDescription& description)
{
    unitObserver.reset();
    audioUnit = std::make_shared<VelotrineAudioUnit>(description, AudioComponentInstantiationOptions{});
    if (isViewLoaded())
        connectToAudioUnit();
    return audioUnit;
}

void VelotrineAUViewControllerMac::loadView()
{
    auto root = std::make_unique<EditorRootView>();
    root->onUnusedKey = [this](const juce::KeyPress& key) { return keyPressed(key); };
    root->onMenuKey = [this] { tools->openByKey(*circlesView); };
    root->onFileDropped = [this](const juce::File& file) { tools->openFile(file); };
    root->setBackground(colours::background);
    root->setSize(initialWidth, initialHeight);
    setView(std::move(root));
}

void VelotrineAUViewControllerMac::viewDidLoad()
{
    registerDisplayFont();
    circlesView = std::make_unique<ConcentricCirclesViewMac>();
    circlesView->backdrop = colours::background;
    circlesView->setOpaque(true);
    circlesView->onRingSelected = [this](int ring) { showRingEditor(ring); };
    circlesView->onRingDeselected = [this] { dismissRingEditor(); };
    circlesView->onRingOpenedByKey = [this](int ring) { openRingByKey(ring); };
    view().addAndMakeVisible(*circlesView);
    makeScaleRow();
    makeTransport();
    makeKnobs();
    makeRingEditor();
    makeTools();
    setFocusOrder();
    view().addMouseListener(&dismissClick, true);
    if (audioUnit)
        connectToAudioUnit();
}

/// As one reads, whatever the arrangement.
void VelotrineAUViewControllerMac::setFocusOrder() const
{
    int place = 0;
    for (auto* component : std::initializer_list<juce::Component*>{
             rootButton.get(), scaleButton.get(), syncButton.get(), bpmField.get(), bpmStepper.get(),
             playButton.get(), circlesView.get(), activityKnob.get(), boredomKnob.get(), caloriesKnob.get(),
             drudgeryKnob.get(), ringEditor.get()})
        component->setExplicitFocusOrder(++place);
}

void VelotrineAUViewControllerMac::makeKnobs()
{
    activityKnob = makeKnob(GlobalParameter::activity, "ACTIVITY", KnobsStyleKit::imageOfActivityUnderlay);
    boredomKnob = makeKnob(GlobalParameter::boredom, "BOREDOM", KnobsStyleKit::imageOfBoredomUnderlay);
    caloriesKnob = makeKnob(GlobalParameter::calories, "CALORIES", KnobsStyleKit::imageOfCaloriesUnderlay);
    drudgeryKnob = makeKnob(GlobalParameter::drudgery, "DRUDGERY", KnobsStyleKit::imageOfDrudgeryUnderlay);
}

std::unique_ptr<AURotaryControl> VelotrineAUViewControllerMac::makeKnob(
    GlobalParameter parameter, const juce::String& name, AURotaryControl::ImageProvider underlay)
{
    const auto address = addressOf(parameter);
    auto knob = std::make_unique<AURotaryControl>();
    knob->backdrop = colours::background;
    knob->resetValue = knobReset;
    knob->setValue(knobReset);
    knob->label = name;
    knob->underlayImageProvider = std::move(underlay);
    knob->overlayImageProvider = KnobsStyleKit::imageOfOverlay;
    knob->textFromValue = [address](float value) {
        return juceText(parameterText(parameterTable()[address], value));
    };
    knob->valueFromText = [](const juce::String& text) { return amountFromEntry(text.toStdString()); };
    knob->onValueChanged = [this, address](float value) { write(address, value); };
    knob->onDragBegan = [this, address] { parameters.beginGesture(address); };
    knob->onDragEnded = [this, address] { parameters.endGesture(address); };
    view().addAndMakeVisible(*knob);
    return knob;
}

void VelotrineAUViewControllerMac::makeScaleRow()
{
    scaleLabel = makeLabel("SCALE:");
    rootButton = std::make_unique<ChoiceButton>("Root", rootNames);
    rootButton->onPicked = [this](int root) { pickRoot(root); };
    scaleButton = std::make_unique<ChoiceButton>("Scale", scaleNames);
    scaleButton->onPicked = [this](int scale) { pickScale(scale); };
    for (auto* component :
         std::initializer_list<juce::Component*>{scaleLabel.get(), rootButton.get(), scaleButton.get()})
        view().addAndMakeVisible(component);
}

void VelotrineAUViewControllerMac::makeTransport()
{
    syncButton = std::make_unique<EditorButton>("Sync", EditorButton::Face::check);
    syncButton->onClick = [this] { syncTapped(); };
    syncTextLabel = makeLabel("SYNC");
    bpmPrefixLabel = makeLabel("BPM:");
    bpmField = std::make_unique<ValueField>();
    bpmField->setTitle("BPM");
    bpmField->onEntryEnded = [this](const juce::String& text) { bpmEntryEnded(text); };
    bpmStepper = std::make_unique<Stepper>();
    bpmStepper->setTitle("BPM");
    bpmStepper->minValue = static_cast<double>(tempoInfo().minValue);
    bpmStepper->maxValue = static_cast<double>(tempoInfo().maxValue);
    bpmStepper->onStep = [this](double) { bpmStepperChanged(); };
    showTempo(tempoInfo().initialValue);
    playButton = std::make_unique<EditorButton>("Play", EditorButton::Face::playStop);
    playButton->onClick = [this] { playTapped(); };
    noticeLabel = makeLabel({});
    noticeLabel->setAlpha(0.55f);
    for (auto* component : std::initializer_list<juce::Component*>{
             syncButton.get(), syncTextLabel.get(), bpmPrefixLabel.get(), bpmField.get(), bpmStepper.get(),
             playButton.get(), noticeLabel.get()})
        view().addAndMakeVisible(component);
}

void VelotrineAUViewControllerMac::makeRingEditor()
{
    const auto addressOfKind = [](int kind, int ring) {
        return addressOf(static_cast<RingParameter>(kind), ring);
    };
    ringEditor = std::make_unique<RingEditorViewMac>();
    ringEditor->onParamChanged = [this, addressOfKind](int kind, int ring, float value) {
        write(addressOfKind(kind, ring), value);
    };
    ringEditor->onEditBegan = [this, addressOfKind](int kind, int ring) {
        parameters.beginGesture(addressOfKind(kind, ring));
    };
    ringEditor->onEditEnded = [this, addressOfKind](int kind, int ring) {
        parameters.endGesture(addressOfKind(kind, ring));
    };
    view().addChildComponent(*ringEditor);
}

void VelotrineAUViewControllerMac::makeTools()
{
    tools = std::make_unique<SettingsTools>(view(), accessToSettings(), history);
    tools->opensOn(*circlesView);
    tools->isControlHeld = [this] { return parameters.isInGesture(); };
    parameters.onEdited = [this](AUParameterAddress address, float before, float after) {
        tools->settings.noteEdit(address, before, after);
    };
}

SettingsAccess VelotrineAUViewControllerMac::accessToSettings() const
{
    auto access = settingsAccess.value_or(SettingsAccess::of([this] { return audioUnit; }));
    if (!hostProvidesSync)
        access.write = [write = access.write](const Settings& from, Settings to) {
            to.values[addressOf(GlobalParameter::sync)] = 0.0f;
            write(from, to);
        };
    return access;
}

void VelotrineAUViewControllerMac::connectToAudioUnit()
{
    const auto& kernel = *audioUnit->dspKernel;
    circlesView->spotsPerRingMax = maxSpotsPerRing;
    circlesView->spotFireTimes = kernel.spotFireTimes.data();
    circlesView->clockPhase = &kernel.clockPhaseBuf;
    circlesView->activityPhases = kernel.activityPhases.data();
    circlesView->lfoOffsets = kernel.lfoOffsets.data();
    isPlaying = kernel.internalPlaying;
    refreshControls();

    const auto refreshLater = [weak = std::weak_ptr(changedParameters)](AddressSet changed) {
        if (const auto parametersToRead = weak.lock())
            parametersToRead->insert(changed);
    };
    unitObserver = std::make_unique<UnitObserver>(audioUnit, refreshLater);
}

void VelotrineAUViewControllerMac::write(ParameterAddress address, float value)
{
    if (!isRefreshing)
        parameters.write(address, value);
}

void VelotrineAUViewControllerMac::refresh(AddressSet changed)
{
    if (!isViewLoaded() || !audioUnit || !audioUnit->parameterTree())
        return;
    const juce::ScopedValueSetter refreshing(isRefreshing, true);
    std::array<bool, ringCount> ringHasChanged{};
    for (const auto address : changed) {
        if (address < globalParameterCount)
            refreshGlobal(static_cast<GlobalParameter>(address));
        else
            ringHasChanged.at(static_cast<std::size_t>(ringOf(address))) = true;
    }
    for (int ring = 0; ring < ringCount; ++ring)
        if (ringHasChanged.at(static_cast<std::size_t>(ring)))
            refreshRing(ring);
    playButton->setToggleState(isPlaying, juce::dontSendNotification);
    refreshSyncDependentControls();
}

void VelotrineAUViewControllerMac::refreshGlobal(GlobalParameter parameter)
{
    const auto value = parameters.value(addressOf(parameter));
    switch (parameter) {
    case GlobalParameter::activity:
        return activityKnob->setValue(value);
    case GlobalParameter::boredom:
        return boredomKnob->setValue(value);
    case GlobalParameter::calories:
        return caloriesKnob->setValue(value);
    case GlobalParameter::drudgery:
        return drudgeryKnob->setValue(value);
    case GlobalParameter::rootNote:
        return rootButton->show(boundedIndex(value, rootNames.size()));
    case GlobalParameter::scaleType:
        return scaleButton->show(boundedIndex(value, scaleNames.size()));
    case GlobalParameter::bpm:
        return showTempo(value);
    case GlobalParameter::sync:
        return syncButton->setToggleState(value > 0.5f, juce::dontSendNotification);
    case GlobalParameter::volume:
        return; // the editor has no control for it
    }
}

void VelotrineAUViewControllerMac::refreshRing(int ring)
{
    auto& rings = *circlesView;
    const auto i = static_cast<std::size_t>(ring);
    const auto shown = static_cast<float>(rings.ringSpotCounts[i]);
    const auto spots = wholeNumber(parameters.value(addressOf(RingParameter::spots, ring), shown));
    // A host may write more than can be drawn.
    rings.ringSpotCounts[i] = std::clamp<std::int64_t>(spots, 0, maxSpotsPerRing);
    rings.spotsPerRing[i] = rings.ringSpotCounts[i];
    rings.ringPhaseOffsets[i] = parameters.value(addressOf(RingParameter::phase, ring));
    rings.ringProbabilities[i] = parameters.value(addressOf(RingParameter::probability, ring));
    rings.redraw();
    if (rings.selectedRing == ring)
        refreshRingEditor();
}

void VelotrineAUViewControllerMac::refreshRingEditor()
{
    if (!ringEditor->isVisible() || !circlesView->selectedRing)
        return;
    const auto ring = *circlesView->selectedRing;
    const auto i = static_cast<std::size_t>(ring);
    RingSettings settings;
    settings.spots = static_cast<int>(circlesView->ringSpotCounts[i]);
    settings.phaseTurns = circlesView->ringPhaseOffsets[i];
    settings.probability = circlesView->ringProbabilities[i];
    settings.octave = static_cast<int>(wholeNumber(parameters.value(addressOf(RingParameter::octave, ring))));
    settings.volume = parameters.value(addressOf(RingParameter::volume, ring));
    settings.timbre = parameters.value(addressOf(RingParameter::timbre, ring));
    ringEditor->fill(ring, settings);
}

void VelotrineAUViewControllerMac::refreshSyncDependentControls()
{
    if (!hostProvidesSync) {
        syncButton->setToggleState(false, juce::dontSendNotification);
        // Once, or each refresh would cause the next.
        if (parameters.value(addressOf(GlobalParameter::sync)) > 0.5f)
            parameters.correct(addressOf(GlobalParameter::sync), 0.0f);
    }
    const auto isSynced = syncButton->getToggleState();
    const auto setUsable = [](juce::Component& component, bool isUsable) {
        component.setEnabled(isUsable);
        component.setAlpha(isUsable ? 1.0f : dimmedAlpha);
    };
    setUsable(*syncButton, hostProvidesSync);
    syncTextLabel->setAlpha(hostProvidesSync ? 1.0f : dimmedAlpha);
    bpmPrefixLabel->setEnabled(!isSynced);
    bpmPrefixLabel->setColour(juce::Label::textColourId, isSynced ? grey(0.5f) : colours::text);
    // With Sync on, the internal clock that it starts does not count.
    setUsable(*playButton, !isSynced);
}

void VelotrineAUViewControllerMac::showTempo(float bpm) const
{
    bpmField->show(juceText(fixedText(static_cast<double>(bpm), 1)));
    bpmStepper->setValue(static_cast<double>(bpm));
}

void VelotrineAUViewControllerMac::viewDidLayout()
{
    const auto width = view().getWidth();
    const auto height = view().getHeight();
    if (width <= 0 || height <= 0)
        return;
    const auto layout = layOutEditor(width, height, [](std::string_view text, double fontSize) {
        return static_cast<double>(
            displayFont(static_cast<float>(fontSize)).getStringWidthFloat(juceText(text)));
    });
    knobSize = layout.knobSize;
    fontSize_cached = layout.fontSize;
    if (layout.isTall)
        portraitTransportBottomY = layout.portraitTransportBottomY;

    const auto points = static_cast<float>(layout.fontSize);
    for (auto* label : {scaleLabel.get(), syncTextLabel.get(), bpmPrefixLabel.get()})
        label->setFont(displayFont(points));
    noticeLabel->setFont(displayFont(points * noticeFontScale));
    for (auto* button : {rootButton.get(), scaleButton.get()})
        button->setFontSize(points);
    bpmField->setFontSize(points);

    place(*circlesView, layout.rings);
    place(*scaleLabel, layout.scaleLabel);
    place(*rootButton, layout.rootButton);
    place(*scaleButton, layout.scaleButton);
    place(*syncButton, layout.syncButton);
    place(*syncTextLabel, layout.syncTextLabel);
    place(*bpmPrefixLabel, layout.bpmPrefixLabel);
    place(*bpmField, layout.bpmField);
    place(*bpmStepper, layout.bpmStepper);
    place(*playButton, layout.playButton);
    place(*noticeLabel, layout.transportNotice);
    noticeLabel->setJustificationType(layout.isTall ? juce::Justification::topRight
                                                    : juce::Justification::centredLeft);
    const std::array knobs{activityKnob.get(), boredomKnob.get(), caloriesKnob.get(), drudgeryKnob.get()};
    for (std::size_t i = 0; i < knobs.size(); ++i)
        place(*knobs[i], layout.knobs[i]);
    ringEditorPlace = layout.ringEditor.toNearestInt();
    placeRingEditor();
    tools->layOut();
    circlesView->redraw();
}

void VelotrineAUViewControllerMac::placeRingEditor()
{
    ringEditor->setBounds(ringEditorPlace);
}

void VelotrineAUViewControllerMac::viewWillAppear()
{
    refreshControls();
}

void VelotrineAUViewControllerMac::setTransportNotice(const juce::String& notice)
{
    std::ignore = view();
    noticeLabel->setText(notice, juce::dontSendNotification);
}

void VelotrineAUViewControllerMac::showRingEditor(int ring)
{
    circlesView->selectedRing = ring;
    if (!view().getLocalBounds().toFloat().contains(ringEditor->titleArea() +
                                                    ringEditor->getPosition().toFloat()))
        placeRingEditor();
    ringEditor->setVisible(true);
    refreshRingEditor();
    circlesView->redraw();
    dismissClick.enable(*ringEditor);
}

void VelotrineAUViewControllerMac::dismissRingEditor()
{
    // First, an entry in one of the panel's fields ends: it still belongs to this ring.
    if (ringEditor->hasKeyboardFocus(true))
        circlesView->grabKeyboardFocus();
    ringEditor->setVisible(false);
    circlesView->selectedRing.reset();
    circlesView->redraw();
    dismissClick.disable();
}

void VelotrineAUViewControllerMac::openRingByKey(int ring)
{
    showRingEditor(ring);
    ringEditor->focusFirstField();
}

void VelotrineAUViewControllerMac::pickRoot(int root)
{
    rootButton->show(root);
    write(addressOf(GlobalParameter::rootNote), static_cast<float>(root));
}

void VelotrineAUViewControllerMac::pickScale(int scale)
{
    scaleButton->show(scale);
    write(addressOf(GlobalParameter::scaleType), static_cast<float>(scale));
}

bool VelotrineAUViewControllerMac::keyPressed(const juce::KeyPress& key)
{
    if (key == juce::KeyPress(juce::KeyPress::escapeKey) && ringEditor->isVisible()) {
        dismissRingEditor();
        circlesView->grabKeyboardFocus();
        return true;
    }
    if (key == juce::KeyPress(juce::KeyPress::spaceKey) && !hostProvidesSync) {
        playTapped();
        return true;
    }
    return tools->keyPressed(key);
}

void VelotrineAUViewControllerMac::playTapped()
{
    isPlaying = !isPlaying;
    playButton->setToggleState(isPlaying, juce::dontSendNotification);
    if (audioUnit)
        audioUnit->dspKernel->internalPlaying = isPlaying;
    circlesView->wake();
}

void VelotrineAUViewControllerMac::syncTapped()
{
    write(addressOf(GlobalParameter::sync), syncButton->getToggleState() ? 1.0f : 0.0f);
    refreshSyncDependentControls();
}

void VelotrineAUViewControllerMac::bpmStepperChanged()
{
    const auto bpm = static_cast<float>(bpmStepper->value());
    showTempo(bpm);
    write(addressOf(GlobalParameter::bpm), bpm);
}

void VelotrineAUViewControllerMac::bpmEntryEnded(const juce::String& text)
{
    const auto typed = text.getDoubleValue();
    const auto bpm = static_cast<float>(
        std::clamp(std::isfinite(typed) ? typed : 0.0, bpmStepper->minValue, bpmStepper->maxValue));
    showTempo(bpm);
    write(addressOf(GlobalParameter::bpm), bpm);
}

} // namespace velotrine
