#include "plugin/HostedEditor.h"

#include "editor/FontLoader.h"

namespace velotrine {

HostedEditor::HostedEditor(HostedInstrument& instrument) : hostedInstrument(instrument)
{
    constexpr int followRateInHz = 50;
    controller.audioUnit = instrument.audioUnit();
    controller.history = instrument.undoHistory();
    controller.settingsAccess = {
        .read = [&instrument] { return instrument.settings(); },
        .write = [&instrument](const Settings& from, const Settings& to) { instrument.edit(from, to); }};
    controller.isPlaying = instrument.audioUnit()->dspKernel->internalPlaying;
    const auto size = instrument.editorSize();
    controller.view().setSize(size.width, size.height);
    timerCallback();
    startTimerHz(followRateInHz);
}

void HostedEditor::timerCallback()
{
    hostedInstrument.followValues();
    const auto notice = hostedInstrument.transportNotice();
    if (notice == shownNotice)
        return;
    shownNotice = notice;
    controller.setTransportNotice(juce::String(notice.data(), notice.size()));
}

} // namespace velotrine
