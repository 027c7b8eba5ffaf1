#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <memory>

namespace velotrine {

/// Owns a view, builds it when it is first asked for, and lays it out when its size changes. Main thread.
class ViewController
{
public:
    ViewController();
    virtual ~ViewController();
    ViewController(const ViewController&) = delete;
    ViewController& operator=(const ViewController&) = delete;

    /// The view; built by the first call.
    [[nodiscard]] juce::Component& view();

    [[nodiscard]] bool isViewLoaded() const noexcept { return rootView != nullptr; }

protected:
    /// Makes the root view and hands it to setView().
    virtual void loadView() = 0;

    /// After loadView(): builds what is in the view.
    virtual void viewDidLoad() {}

    /// The view has a new size, or its first.
    virtual void viewDidLayout() {}

    /// The view is about to show on a screen, or shows there for the first time.
    virtual void viewWillAppear() {}

    virtual void viewDidAppear() {}

    void setView(std::unique_ptr<juce::Component> view);

    /// Stops following the view. Every class that overrides a function above calls it first in its
    /// destructor.
    void unloadView();

private:
    class Follower;

    std::unique_ptr<juce::Component> rootView;
    std::unique_ptr<Follower> follower;
};

} // namespace velotrine
