#pragma once

#include "engine/ParameterAddress.h"
#include "plugin/HostTransport.h"
#include "tests/support/Sound.h"

#include <lv2/atom/atom.h>
#include <lv2/core/lv2.h>
#include <lv2/log/log.h>
#include <lv2/options/options.h>
#include <lv2/state/state.h>
#include <lv2/ui/ui.h>
#include <lv2/urid/urid.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace velotrine {

/// The LV2 bundle's binary that the build made, as a host loads it.
class Lv2Library
{
public:
    Lv2Library();
    ~Lv2Library();
    Lv2Library(const Lv2Library&) = delete;
    Lv2Library& operator=(const Lv2Library&) = delete;

    [[nodiscard]] const LV2_Descriptor* plugin(std::uint32_t index) const { return pluginAt(index); }

    [[nodiscard]] const LV2UI_Descriptor* ui(std::uint32_t index) const { return uiAt(index); }

private:
    void* handle = nullptr;
    LV2_Descriptor_Function pluginAt = nullptr;
    LV2UI_DescriptorFunction uiAt = nullptr;
};

/// What a host says about its transport at a frame of a block: numbers of any of the format's types, by URI.
struct Lv2Position
{
    using Number = std::variant<float, double, std::int32_t, std::int64_t>;

    std::int64_t frame = 0;
    std::map<std::string, Number> says;
};

/// Everything that real hosts say, in the types they use.
[[nodiscard]] Lv2Position positionOf(std::int64_t frame, const HostTransport& transport);

/// A host with one instance of the plug-in.
class Lv2Host
{
public:
    /// Features that the plug-in and its editor can use and this host lacks.
    using Features = std::vector<std::string>;

    explicit Lv2Host(const Lv2Library& library, double sampleRate = 48000.0, const Features& without = {});
    ~Lv2Host();
    Lv2Host(const Lv2Host&) = delete;
    Lv2Host& operator=(const Lv2Host&) = delete;

    /// None if the plug-in refused.
    [[nodiscard]] bool hasPlugin() const noexcept { return plugin != nullptr; }

    [[nodiscard]] LV2_URID idOf(const char* uri);

    void connect(std::uint32_t port, void* data);
    void start();
    void stop();

    /// Whether it runs or not, which the format forbids.
    void deactivate();

    void run(std::uint32_t frames);

    /// Connects and runs.
    void run(float* left, float* right, std::uint32_t frames, const std::vector<Lv2Position>& positions = {});

    /// Runs and throws the sound away.
    void runUnheard(std::uint32_t frames);

    /// The atoms that the time port reads; 8 bytes each, whatever they say.
    [[nodiscard]] std::vector<std::uint64_t> sequenceOf(const std::vector<Lv2Position>& positions);

    /// The text that the plug-in stored.
    [[nodiscard]] std::string save() const;
    LV2_State_Status restore(const std::string& text);

    /// None is a state without the plug-in's own property.
    LV2_State_Status restore(const std::optional<std::string>& bytes, const char* type);

    // The editor

    /// @param scale  pixels for each point that the host asks for; none if it says nothing
    bool openUi(unsigned long parentWindow, std::optional<float> scale = std::nullopt);
    void closeUi();

    /// Calls the editor's idle function again and again, as hosts do, and in between the plug-in, if it runs.
    void idle(std::chrono::milliseconds duration);

    /// Shows the editor a port's value.
    void showPort(std::uint32_t port, float value);

    /// Tells the editor what size its window has now.
    bool resizeUi(int width, int height);

    std::array<float, parameterCount> controls{}; ///< initial values at first

    bool runsPluginWhileIdle = true; ///< false where the test runs it itself

    std::vector<std::string> told; ///< edits: "begin 3", "3 = 0.25", "end 3"
    std::vector<std::string> logged;
    std::vector<std::pair<int, int>> wantedSizes; ///< what the editor asked for
    unsigned long uiWindow = 0;

private:
    [[nodiscard]] std::vector<const LV2_Feature*> features() const;

    const LV2_Descriptor& descriptor;
    const LV2UI_Descriptor& uiDescriptor;
    Features missing;
    std::mutex idsMutex; ///< a plug-in may ask on any thread
    std::map<std::string, LV2_URID> ids;
    LV2_Handle plugin = nullptr;
    LV2UI_Handle ui = nullptr;
    bool isRunning = false;
    unsigned long parent = 0;
    float wantedScale = 0.0f;

    LV2_URID_Map map{};
    LV2_Log_Log log{};
    LV2UI_Resize resize{};
    LV2UI_Touch touch{};
    std::array<LV2_Options_Option, 2> options{};
    mutable std::array<LV2_Feature, 8> given{};
};

} // namespace velotrine
