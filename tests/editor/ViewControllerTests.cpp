#include "editor/ViewController.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace velotrine {
namespace {

class Recorder final : public ViewController
{
public:
    ~Recorder() override { unloadView(); }

    std::vector<std::string> calls;

protected:
    void loadView() override
    {
        calls.emplace_back("loadView");
        auto root = std::make_unique<juce::Component>();
        root->setSize(10, 20);
        setView(std::move(root));
    }

    void viewDidLoad() override { calls.emplace_back("viewDidLoad"); }

    void viewDidLayout() override { calls.emplace_back("viewDidLayout"); }
};

TEST(ViewController, LoadsItsViewWhenItIsFirstAskedForAndOnlyThen)
{
    Recorder controller;
    EXPECT_FALSE(controller.isViewLoaded());
    EXPECT_EQ(controller.view().getHeight(), 20);
    std::ignore = controller.view();
    EXPECT_EQ(controller.calls, (std::vector<std::string>{"loadView", "viewDidLoad", "viewDidLayout"}));
}

TEST(ViewController, LaysOutAfterAChangeOfSizeButNotAfterAMove)
{
    Recorder controller;
    controller.view().setSize(30, 40);
    controller.view().setTopLeftPosition(5, 5);
    EXPECT_EQ(controller.calls.size(), 4u);
    EXPECT_EQ(controller.calls.back(), "viewDidLayout");
}

} // namespace
} // namespace velotrine
