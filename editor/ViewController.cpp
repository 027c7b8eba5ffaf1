#include "editor/ViewController.h"

#include "engine/FatalError.h"

namespace velotrine {

/// Tells the controller what happens to its view.
class ViewController::Follower final : public juce::ComponentMovementWatcher
{
public:
    Follower(ViewController& controllerToTell, juce::Component& view)
        : ComponentMovementWatcher(&view), controller(controllerToTell)
    {}

    using ComponentMovementWatcher::componentMovedOrResized;
    using ComponentMovementWatcher::componentVisibilityChanged;

    void componentMovedOrResized(bool, bool wasResized) override
    {
        if (wasResized)
            controller.viewDidLayout();
    }

    void componentPeerChanged() override { componentVisibilityChanged(); }

    void componentVisibilityChanged() override
    {
        const auto isShown = getComponent()->isShowing();
        if (isShown == wasShown)
            return;
        wasShown = isShown;
        if (!isShown)
            return;
        controller.viewWillAppear();
        controller.viewDidAppear();
    }

private:
    ViewController& controller;
    bool wasShown = false;
};

ViewController::ViewController() = default;

ViewController::~ViewController()
{
    unloadView();
}

juce::Component& ViewController::view()
{
    if (rootView)
        return *rootView;
    loadView();
    if (!rootView)
        fatalError("a view controller loaded no view");
    viewDidLoad();
    viewDidLayout();
    follower = std::make_unique<Follower>(*this, *rootView);
    return *rootView;
}

void ViewController::setView(std::unique_ptr<juce::Component> view)
{
    rootView = std::move(view);
}

void ViewController::unloadView()
{
    follower.reset();
    rootView.reset();
}

} // namespace velotrine
