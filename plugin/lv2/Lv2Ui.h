#pragma once

#include "plugin/EmbeddedEditor.h"
#include "plugin/InstrumentHost.h"
#include "plugin/ThreadChecks.h"
#include "plugin/lv2/Lv2Plugin.h"

#include <lv2/core/lv2.h>
#include <lv2/ui/ui.h>

#include <cstdint>

namespace velotrine {

/// The editor in an LV2 host's window. It works on the plug-in's own instance, because it shows the rings as
/// they turn; edits go to the host's ports. Main thread.
class Lv2Ui final : private InstrumentHost
{
public:
    /// How the host takes what the editor writes.
    struct Port
    {
        LV2UI_Write_Function write = nullptr;
        LV2UI_Controller controller = nullptr;
        const LV2UI_Touch* touch = nullptr; ///< null if the host does not care
    };

    /// @param plugin  has no editor yet; outlives this
    Lv2Ui(Lv2Plugin& plugin, const Port& port);
    ~Lv2Ui() override;

    /// Shows the editor in the host's window. False if it cannot be done.
    /// @param scale  pixels for each point; for a scale that no screen has, the screen's settings count
    bool open(unsigned long parentWindow, double scale);

    [[nodiscard]] EmbeddedEditor& editor() noexcept { return embedded; }

    /// Where the host made it, and where it must do everything else with it.
    const HomeThread home;

    /// To be called often.
    void idle();

    /// Takes what the host's port says.
    void showPort(std::uint32_t port, float value) noexcept;

private:
    void beginGesture(ParameterAddress address) override;
    void valueChanged(ParameterAddress address, float value) override;
    void endGesture(ParameterAddress address) override;

    void writeStalePorts();

    Lv2Plugin& lv2Plugin;
    const Port hostPort;
    EmbeddedEditor& embedded;
    unsigned knownStates = 0; ///< of the plug-in's settled ones
};

/// What a host calls.
[[nodiscard]] const LV2UI_Descriptor& lv2UiDescriptor() noexcept;

} // namespace velotrine
