#pragma once

#include "audiounit/NoteOutput.h"
#include "plugin/HostTransport.h"
#include "plugin/clap/ClapHostExtensions.h"
#include "tests/support/Sound.h"

#include <clap/entry.h>
#include <clap/ext/audio-ports.h>
#include <clap/ext/gui.h>
#include <clap/ext/note-ports.h>
#include <clap/ext/params.h>
#include <clap/ext/state.h>
#include <clap/ext/timer-support.h>
#include <clap/plugin-factory.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace velotrine {

/// The CLAP file that the build made, as a host loads it.
class ClapLibrary
{
public:
    ClapLibrary();
    ~ClapLibrary();
    ClapLibrary(const ClapLibrary&) = delete;
    ClapLibrary& operator=(const ClapLibrary&) = delete;

    [[nodiscard]] const clap_plugin_factory_t& factory() const noexcept { return *pluginFactory; }

    [[nodiscard]] const clap_plugin_entry_t& entry() const noexcept { return *pluginEntry; }

private:
    void* handle = nullptr;
    const clap_plugin_entry_t* pluginEntry = nullptr;
    const clap_plugin_factory_t* pluginFactory = nullptr;
};

/// A value that the host automates at a frame of the current block.
struct ClapAutomation
{
    std::uint32_t frame = 0;
    clap_id id = 0;
    double value = 0.0;
};

/// A host with one instance of the plug-in.
class ClapHost
{
public:
    /// @param noteDialects  what the host says that it knows; none if it does not say
    explicit ClapHost(const ClapLibrary& library, std::optional<std::uint32_t> noteDialects = std::nullopt);
    ~ClapHost();
    ClapHost(const ClapHost&) = delete;
    ClapHost& operator=(const ClapHost&) = delete;

    [[nodiscard]] const clap_plugin_t& plugin() const noexcept { return *instance; }

    template <typename Extension>
    [[nodiscard]] const Extension& extension(const char* id) const
    {
        const auto* const found = instance->get_extension(instance, id);
        if (found == nullptr)
            throw std::runtime_error(std::string("no extension ") + id);
        return *static_cast<const Extension*>(found);
    }

    [[nodiscard]] const clap_plugin_params_t& params() const
    {
        return extension<clap_plugin_params_t>(CLAP_EXT_PARAMS);
    }

    [[nodiscard]] double value(clap_id id) const;
    bool start(double sampleRate, std::uint32_t maxFrames);
    void stop();

    /// One block. None is a host without a transport.
    clap_process_status process(float* left, float* right, std::uint32_t frames,
                                const std::optional<HostTransport>& transport,
                                const std::vector<ClapAutomation>& automation = {});
    void flush(const std::vector<ClapAutomation>& automation);

    /// Before each call in which the plug-in may send some.
    void forgetEvents() noexcept;

    /// Empty if the plug-in could not save.
    [[nodiscard]] std::string save() const;
    bool load(const std::string& state, std::size_t bytesAtATime = 4096);

    /// Serves the plug-in's timers and descriptors.
    void runLoop(std::chrono::milliseconds duration);

    bool watchesDescriptors = true; ///< set it before the editor is created

    static constexpr std::size_t usualRoomForNotes = 4096;

    std::vector<NoteMessage> notes; ///< of the last block
    std::size_t roomForNotes = usualRoomForNotes;
    std::vector<std::uint32_t> eventTypes;  ///< of the last block, in the order in which they came
    std::vector<std::uint32_t> eventFrames; ///< likewise

    std::vector<std::string> told; ///< edits: "begin 3", "3 = 0.25", "end 3"
    std::vector<std::string> logged;
    int rescans = 0;
    int flushRequests = 0;
    int dirtyMarks = 0;
    std::map<int, int> descriptors;          ///< how often each is watched
    std::map<clap_id, std::uint32_t> timers; ///< periods in ms

    const std::optional<std::uint32_t> dialects;

private:
    static const void* hostExtension(const clap_host_t* host, const char* id);

    clap_host_t host{};
    const clap_plugin_t* instance = nullptr;
    bool isActive = false;
    clap_id nextTimer = 7;
};

/// A process call, prepared before it is made: the host allocates nothing in it but for edits.
class ClapCall
{
public:
    /// @param host  outlives the call, and gets what the plug-in says in it
    explicit ClapCall(ClapHost& host);
    ClapCall(const ClapCall&) = delete;
    ClapCall& operator=(const ClapCall&) = delete;

    void setTransport(const std::optional<HostTransport>& transport);

    /// For the next block; in the order of frames.
    void add(const ClapAutomation& automation);

    clap_process_status process(float* left, float* right, std::uint32_t frames);

private:
    ClapHost& host;
    std::array<float*, 2> channels{};
    clap_audio_buffer_t output{};
    std::vector<clap_event_param_value_t> events;
    clap_event_transport_t transportEvent{};
    clap_input_events_t in{};
    clap_output_events_t out{};
    clap_process_t call{};
};

} // namespace velotrine
