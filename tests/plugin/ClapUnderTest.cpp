#include "tests/plugin/ClapUnderTest.h"

namespace velotrine {

namespace {

const clap_plugin_gui_t& guiOf(const ClapHost& host)
{
    return host.extension<clap_plugin_gui_t>(CLAP_EXT_GUI);
}

} // namespace

ClapUnderTest::~ClapUnderTest()
{
    closeEditor();
}

bool ClapUnderTest::start(double sampleRate, int maxFrames)
{
    isRunning = host.start(sampleRate, static_cast<std::uint32_t>(maxFrames));
    return isRunning;
}

void ClapUnderTest::stop()
{
    host.stop();
    isRunning = false;
}

void ClapUnderTest::setTransport(const std::optional<HostTransport>& transport)
{
    call.setTransport(transport);
}

void ClapUnderTest::setValue(ParameterAddress address, double value)
{
    const ClapAutomation change{.frame = 0, .id = static_cast<clap_id>(address), .value = value};
    if (isRunning)
        call.add(change);
    else
        host.flush({change});
}

bool ClapUnderTest::render(float* left, float* right, int frames)
{
    return call.process(left, right, static_cast<std::uint32_t>(frames)) != CLAP_PROCESS_ERROR;
}

double ClapUnderTest::value(ParameterAddress address) const
{
    return host.value(static_cast<clap_id>(address));
}

std::string ClapUnderTest::save() const
{
    return host.save();
}

bool ClapUnderTest::load(const std::string& state)
{
    return host.load(state);
}

bool ClapUnderTest::openEditor(XWindow parent, double scale)
{
    closeEditor();
    const auto* const plugin = &host.plugin();
    const auto& gui = guiOf(host);
    isEditorOpen = gui.create(plugin, CLAP_WINDOW_API_X11, false);
    const clap_window_t window{.api = CLAP_WINDOW_API_X11, .x11 = parent};
    return isEditorOpen && gui.set_scale(plugin, scale) && gui.set_parent(plugin, &window) &&
           gui.show(plugin);
}

void ClapUnderTest::closeEditor()
{
    if (isEditorOpen)
        guiOf(host).destroy(&host.plugin());
    isEditorOpen = false;
}

bool ClapUnderTest::resizeEditor(int width, int height)
{
    auto w = static_cast<std::uint32_t>(width);
    auto h = static_cast<std::uint32_t>(height);
    return guiOf(host).adjust_size(&host.plugin(), &w, &h) && guiOf(host).set_size(&host.plugin(), w, h);
}

void ClapUnderTest::runLoop(std::chrono::milliseconds duration)
{
    host.runLoop(duration);
    // A running plug-in says it in the next block.
    if (!isRunning)
        host.flush({});
}

const std::vector<std::string>& ClapUnderTest::edits() const
{
    return host.told;
}

std::vector<HostMistake> ClapUnderTest::forbiddenCalls()
{
    const auto& plugin = host.plugin();
    const auto activate = [&plugin](double rate) { plugin.activate(&plugin, rate, 1, 512); };
    return {{"activates twice",
             [=] {
                 activate(48000.0);
                 activate(96000.0);
             }},
            {"activates with more frames at least than at most",
             [&plugin] { plugin.activate(&plugin, 48000.0, 512, 1); }},
            {"deactivates twice",
             [&plugin] {
                 plugin.deactivate(&plugin);
                 plugin.deactivate(&plugin);
             }},
            {"starts processing while it is not active",
             [&plugin] {
                 plugin.deactivate(&plugin);
                 plugin.start_processing(&plugin);
             }},
            {"starts processing twice",
             [&plugin] {
                 plugin.start_processing(&plugin);
                 plugin.start_processing(&plugin);
             }},
            {"stops processing twice",
             [&plugin] {
                 plugin.stop_processing(&plugin);
                 plugin.stop_processing(&plugin);
             }},
            {"resets while it is not active",
             [&plugin] {
                 plugin.deactivate(&plugin);
                 plugin.reset(&plugin);
             }},
            {"deactivates while it processes",
             [=, &plugin] {
                 activate(48000.0);
                 plugin.start_processing(&plugin);
                 plugin.deactivate(&plugin);
             }},
            {"destroys an editor that it never created", [this, &plugin] {
                 closeEditor();
                 guiOf(host).destroy(&plugin);
                 guiOf(host).show(&plugin);
                 guiOf(host).set_size(&plugin, 600, 500);
             }}};
}

} // namespace velotrine
