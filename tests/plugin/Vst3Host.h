#pragma once

#include "audiounit/NoteOutput.h"
#include "plugin/HostTransport.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velotrine {

namespace vst3 {

class Call;

}

/// A value, 0 to 1, that the host automates in the current block.
struct Vst3Automation
{
    std::uint32_t id = 0;
    double value = 0.0;
};

struct Vst3Parameter
{
    std::uint32_t id = 0;
    std::string title;
    std::int32_t stepCount = 0;
    double defaultValue = 0.0;
    std::int32_t flags = 0;
};

/// The memory of one call of process(), right or wrong.
struct Vst3Block
{
    std::vector<float*> channels; ///< the output's; any may be null
    int frames = 0;
    int channelCount = static_cast<int>(channels.size()); ///< as the host says
    int busCount = 1;
    bool hasBusses = true;   ///< else the host's list of them is null
    bool hasChannels = true; ///< else the bus's list of them is null
    bool isDouble = false;   ///< the host says that samples have 64 bits
};

/// A host with one instance of the VST3 plug-in that the build made, loaded through the format's entry.
class Vst3Host
{
public:
    Vst3Host();
    ~Vst3Host();
    Vst3Host(const Vst3Host&) = delete;
    Vst3Host& operator=(const Vst3Host&) = delete;

    [[nodiscard]] std::string category() const;
    [[nodiscard]] std::string vendor() const;
    [[nodiscard]] int audioInputs() const;
    [[nodiscard]] int audioOutputs() const;
    [[nodiscard]] int eventInputs() const;
    [[nodiscard]] int eventOutputs() const;

    /// In the plug-in's order.
    [[nodiscard]] std::vector<Vst3Parameter> parameters() const;
    [[nodiscard]] double value(std::uint32_t id) const;
    void setValue(std::uint32_t id, double value) const; ///< from the host's own controls
    [[nodiscard]] std::string text(std::uint32_t id, double value) const;
    [[nodiscard]] std::optional<double> valueOf(std::uint32_t id, const std::string& text) const;
    [[nodiscard]] std::vector<std::string> programs() const;

    /// The parameter that chooses one of them.
    [[nodiscard]] std::uint32_t programParameter() const;

    /// Whether the plug-in takes what a host announces; it does not start yet.
    bool announce(double sampleRate, int maxFrames, bool isDouble = false) const;
    bool start(double sampleRate, int maxFrames);
    void stop();

    /// Each alone, whatever the other is.
    void setActive(bool isOn);
    void setProcessing(bool isOn);

    bool process(float* left, float* right, int frames, const std::optional<HostTransport>& transport,
                 const std::vector<Vst3Automation>& automation = {});
    bool process(const Vst3Block& block, const std::optional<HostTransport>& transport = std::nullopt,
                 const std::vector<Vst3Automation>& automation = {});

    bool process(vst3::Call& call);

    /// What the last block sent, unless the call was prepared.
    [[nodiscard]] const std::vector<NoteMessage>& notes() const noexcept { return lastNotes; }

    /// Asks for an output of two channels, or of a list that is not there.
    [[nodiscard]] bool takesStereo(bool hasList) const;

    [[nodiscard]] std::string save() const;
    bool load(const std::string& state) const;

    // The editor

    /// @param scale  pixels for each of its points
    bool open(unsigned long parentWindow, double scale = 1.0);
    void close();
    bool resize(int width, int height) const;
    [[nodiscard]] std::pair<int, int> size() const;
    void runLoop(std::chrono::milliseconds duration);

    /// Edits by the index of the parameter: "begin 3", "3 = 0.25", "end 3".
    [[nodiscard]] const std::vector<std::string>& told() const;

    /// What is done as the plug-in asks to be looked at anew, on whichever thread it does.
    void onRestart(std::function<void()> action);

    /// Tells the plug-in that nobody listens any more, as a host does before all else that ends it.
    void stopListening();

private:
    struct Implementation;
    std::unique_ptr<Implementation> self;
    std::vector<NoteMessage> lastNotes;
};

} // namespace velotrine
