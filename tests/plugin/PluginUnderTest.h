#pragma once

#include "audiounit/NoteOutput.h"
#include "engine/ParameterAddress.h"
#include "plugin/HostTransport.h"
#include "tests/support/VirtualDisplay.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace velotrine {

/// Something that a careless host does.
struct HostMistake
{
    std::string name;
    std::function<void()> make;
};

/// One instance of the plug-in in a host of its format: what a host of any format can do. It is loaded from
/// the file that the build made, and destroyed as a host does that has forgotten nothing. The threads are the
/// format's: render() on one thread at a time, all else on the main thread. A release build takes states on
/// any.
class PluginUnderTest
{
public:
    PluginUnderTest() = default;
    virtual ~PluginUnderTest() = default;
    PluginUnderTest(const PluginUnderTest&) = delete;
    PluginUnderTest& operator=(const PluginUnderTest&) = delete;

    // Sound

    /// Announces sample rate and largest block, and starts; a running plug-in is stopped first, and keeps its
    /// state. False if the plug-in refuses.
    virtual bool start(double sampleRate, int maxFrames) = 0;
    virtual void stop() = 0;

    /// What the host says of its transport from the next block on. None is a host that says nothing, which in
    /// LV2 means that nothing has changed.
    virtual void setTransport(const std::optional<HostTransport>& transport) = 0;

    /// From the host's controls or its automation, in the parameter's own unit. While the plug-in runs, it
    /// arrives at the first frame of the next block.
    virtual void setValue(ParameterAddress address, double value) = 0;

    /// One block: only the call of the plug-in, for everything that goes into it is prepared. The host
    /// allocates nothing. Any pointer may be null. False if the plug-in says that it failed.
    virtual bool render(float* left, float* right, int frames) = 0;

    /// What the last block sent to the host, in the order and at the frames in which it came.
    [[nodiscard]] virtual const std::vector<NoteMessage>& notes() const = 0;

    /// How many messages the host can take in each block to come; at first more than there are.
    virtual void setRoomForNotes(int messages) = 0;

    /// As the plug-in tells the host, in the parameter's own unit. In LV2 only a saved state tells.
    [[nodiscard]] virtual double value(ParameterAddress address) const = 0;

    // State

    /// Empty if the plug-in could not save.
    [[nodiscard]] virtual std::string save() const = 0;

    /// False if the plug-in refuses.
    virtual bool load(const std::string& state) = 0;

    // Editor

    /// @param scale  pixels for each of its points
    virtual bool openEditor(XWindow parent, double scale) = 0;

    bool openEditor(XWindow parent) { return openEditor(parent, 1.0); }

    /// Does nothing while none is open.
    virtual void closeEditor() = 0;

    /// Asks for another size, in pixels; the plug-in takes the nearest that it can have.
    virtual bool resizeEditor(int width, int height) = 0;

    /// Runs the host's loop, in which an editor lives.
    virtual void runLoop(std::chrono::milliseconds duration) = 0;

    /// The editor's edits that have reached the host: "begin 3", "3 = 0.25", "end 3", with values as the
    /// format has them.
    [[nodiscard]] virtual const std::vector<std::string>& edits() const = 0;

    /// Calls in orders that the format forbids, to be made whether the plug-in runs or not; start() after any
    /// of them is a start like every other.
    [[nodiscard]] virtual std::vector<HostMistake> forbiddenCalls() = 0;
};

} // namespace velotrine
