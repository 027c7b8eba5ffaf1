#pragma once

#include "audiounit/VelotrineAudioUnit.h"
#include "editor/ViewController.h"

#include <memory>

namespace velotrine {

/// The instrument's editor. Main thread.
class VelotrineAUViewControllerMac final : public ViewController
{
public:
    VelotrineAUViewControllerMac() = default;
    ~VelotrineAUViewControllerMac() override;

    /// The unit that this editor controls. Set it before the view is first asked for, or let
    /// createAudioUnit() make it.
    std::shared_ptr<VelotrineAudioUnit> audioUnit;

    /// Whether the host supplies tempo and transport; where it does not, sync is forced off.
    bool hostProvidesSync = true;

protected:
    void loadView() override;
};

} // namespace velotrine
