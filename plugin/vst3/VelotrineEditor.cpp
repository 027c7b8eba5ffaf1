#include "plugin/vst3/VelotrineEditor.h"

namespace velotrine {

VelotrineEditor::VelotrineEditor(juce::AudioProcessor& audioProcessor, HostedInstrument& instrument)
    : AudioProcessorEditor(audioProcessor), hostedInstrument(instrument), editor(instrument)
{
    const auto size = instrument.editorSize();
    setOpaque(true);
    addAndMakeVisible(editor.view());
    setResizable(true, false);
    setResizeLimits(EditorSize::minWidth, EditorSize::minHeight, EditorSize::maxSide, EditorSize::maxSide);
    setSize(size.width, size.height);
}

VelotrineEditor::~VelotrineEditor() = default;

void VelotrineEditor::resized()
{
    editor.view().setBounds(getLocalBounds());
    hostedInstrument.setEditorSize({getWidth(), getHeight()});
}

void VelotrineEditor::paint(juce::Graphics& graphics)
{
    graphics.fillAll(juce::Colours::black);
}

void VelotrineEditor::parentHierarchyChanged()
{
    AudioProcessorEditor::parentHierarchyChanged();
#if JUCE_LINUX
    auto* const peer = getPeer();
    if (peer == keyboardPeer)
        return;
    keyboardPeer = peer;
    keyboard = peer != nullptr ? std::make_unique<EmbeddedKeyboard>(*this) : nullptr;
#endif
}

} // namespace velotrine
