#include "editor/VelotrineAUViewControllerMac.h"

#include "editor/Colours.h"
#include "editor/FlippedView.h"

namespace velotrine {

VelotrineAUViewControllerMac::~VelotrineAUViewControllerMac()
{
    unloadView();
}

void VelotrineAUViewControllerMac::loadView()
{
    auto root = std::make_unique<FlippedView>();
    root->setSize(480, 360);
    root->setBackground(colours::background);
    setView(std::move(root));
}

} // namespace velotrine
