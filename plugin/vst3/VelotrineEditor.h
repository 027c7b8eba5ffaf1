#pragma once

#include "plugin/EmbeddedKeyboard.h"
#include "plugin/HostedEditor.h"

#include <juce_audio_processors/juce_audio_processors.h>

#include <memory>

namespace velotrine {

/// The instrument's editor as JUCE's wrappers want it. Main thread.
class VelotrineEditor final : public juce::AudioProcessorEditor
{
public:
    /// @param processor   outlives the editor, and so does the instrument
    VelotrineEditor(juce::AudioProcessor& processor, HostedInstrument& instrument);
    ~VelotrineEditor() override;

    void resized() override;
    void paint(juce::Graphics& graphics) override;
    void parentHierarchyChanged() override;

private:
    HostedInstrument& hostedInstrument;
    HostedEditor editor;
#if JUCE_LINUX
    std::unique_ptr<EmbeddedKeyboard> keyboard; ///< while the editor is in a window
    juce::ComponentPeer* keyboardPeer = nullptr;
#endif
};

} // namespace velotrine
