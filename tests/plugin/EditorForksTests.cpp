#include "tests/plugin/ClapHost.h"
#include "tests/plugin/EditorPlaces.h"
#include "tests/plugin/ForkCounter.h"
#include "tests/plugin/Lv2Host.h"
#include "tests/plugin/VirtualDisplay.h"
#include "tests/plugin/Vst3Host.h"

#include <chrono>
#include <filesystem>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

using namespace std::chrono_literals;

/// A forked host shares its memory, locks and devices with the child for a moment; one with hundreds of
/// plug-ins must not be forked by each.
class EditorForks : public testing::Test
{
protected:
    EditorForks()
    {
        // Without it nobody would ask it.
        EXPECT_TRUE(std::filesystem::exists("/usr/bin/gsettings"));
    }

    static constexpr int editors = 11;

    const VirtualDisplay& display = VirtualDisplay::shared();
    const XWindow parent = display.makeWindow(editorWidth, editorHeight);
    const int before = processesStarted();
};

TEST_F(EditorForks, ClapEditorsStartNoProcess)
{
    const ClapLibrary library;
    for (int i = 0; i < editors; ++i) {
        ClapHost host(library);
        const auto& gui = host.extension<clap_plugin_gui_t>(CLAP_EXT_GUI);
        ASSERT_TRUE(gui.create(&host.plugin(), CLAP_WINDOW_API_X11, false));
        const clap_window_t window{.api = CLAP_WINDOW_API_X11, .x11 = parent};
        ASSERT_TRUE(gui.set_parent(&host.plugin(), &window));
        ASSERT_TRUE(gui.show(&host.plugin()));
        host.runLoop(20ms);
        gui.destroy(&host.plugin());
    }
    EXPECT_EQ(processesStarted() - before, 0);
}

TEST_F(EditorForks, Lv2EditorsStartNoProcess)
{
    const Lv2Library library;
    for (int i = 0; i < editors; ++i) {
        Lv2Host host(library);
        ASSERT_TRUE(host.openUi(parent));
        host.idle(20ms);
    }
    EXPECT_EQ(processesStarted() - before, 0);
}

TEST_F(EditorForks, Vst3EditorsStartNoProcess)
{
    for (int i = 0; i < editors; ++i) {
        Vst3Host host;
        ASSERT_TRUE(host.open(parent));
        host.runLoop(20ms);
    }
    EXPECT_EQ(processesStarted() - before, 0);
}

TEST_F(EditorForks, AProcessThatIsStartedIsCounted)
{
    ASSERT_EQ(std::system("true"), 0);
    EXPECT_EQ(processesStarted() - before, 1);
}

} // namespace
} // namespace velotrine
