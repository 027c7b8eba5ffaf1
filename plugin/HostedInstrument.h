#pragma once

#include "audiounit/CycleRenderer.h"
#include "audiounit/SampleRateRange.h"
#include "audiounit/VelotrineAudioUnit.h"
#include "engine/AddressSet.h"
#include "engine/Nonblocking.h"
#include "engine/Shared.h"
#include "plugin/HostTransport.h"
#include "plugin/HostedState.h"
#include "plugin/InstrumentHost.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

namespace velotrine {

/// The instrument inside a music host, whatever the plug-in format: it renders in short cycles of its own,
/// follows the host's transport, checks all that the host hands over, and carries edits between host, engine
/// and editor. Nothing that a host does stops the program.
///
/// Threads: render thread and main thread as said below; functions that say "any thread" never wait.
class HostedInstrument
{
public:
    /// Whether there is sound at a rate.
    [[nodiscard]] static constexpr bool takesSampleRate(double sampleRate) noexcept
    {
        return isPlayable(sampleRate);
    }

    /// A program that a host sends sooner after a state than this belongs to the session that it is loading,
    /// not to a musician's hand.
    static constexpr double programHoldSeconds = 0.5;

    /// @param host  told of edits; outlives the instrument
    explicit HostedInstrument(InstrumentHost& host);
    ~HostedInstrument();
    HostedInstrument(const HostedInstrument&) = delete;
    HostedInstrument& operator=(const HostedInstrument&) = delete;

    /// What an editor controls and shows. Do not render with it.
    [[nodiscard]] const std::shared_ptr<VelotrineAudioUnit>& audioUnit() const noexcept { return unit; }

    // Rendering

    /// Makes ready to render; all sound ends and the clock goes back to its start. False, and nothing is
    /// ready, for a sample rate that is not one. Throws, and nothing is ready, if there is no memory. Main
    /// thread, while nothing renders.
    [[nodiscard]] bool prepare(double sampleRate);

    /// The opposite. Main thread, while nothing renders.
    void release();

    /// Ends all sound and puts the clock back to its start. Render thread.
    void reset() noexcept VELOTRINE_NONBLOCKING;

    /// What the host says of its transport from the next frame on; it holds from the next render cycle. None
    /// for a host without one, which leaves what was said before in force. Render thread.
    void setTransport(const std::optional<HostTransport>& transport) noexcept VELOTRINE_NONBLOCKING;

    /// Fills both channels; either may be null, and is then not written. Silence while not ready. Values set
    /// between two calls hold from the next render cycle, so that a host that wants a value at a certain
    /// frame renders up to it first. Render thread.
    /// @param frames  any number; none for fewer than 1
    void render(float* left, float* right, int frames) noexcept VELOTRINE_NONBLOCKING;

    // Values

    /// Sets a parameter, bounded to its range and to whole numbers where it has steps. False, and nothing
    /// changes, for a value that is not finite and for an address that no parameter has. The host is not
    /// told. Any thread.
    bool setValue(ParameterAddress address, double value) noexcept VELOTRINE_NONBLOCKING;

    /// The value in force; 0 for an address that no parameter has. Any thread.
    [[nodiscard]] float value(ParameterAddress address) const noexcept VELOTRINE_NONBLOCKING;

    /// Tells the tree's observers, an editor among them, which values the host has set since the last call.
    /// Call it about 60 times a second while an editor is open. Main thread.
    void followValues();

    // Presets

    /// Applies a factory preset and tells the host which values it has changed. False, and nothing changes,
    /// for a number that no preset has. Main thread.
    bool choosePreset(std::size_t number);

    /// The same for a number that a host sends by itself, except right after a state: the state stays.
    bool chooseProgram(std::size_t number);

    /// The preset chosen last, by hand or with a state; 0 if none was.
    [[nodiscard]] std::size_t presetNumber() const;

    // State

    /// Any thread but the render thread.
    [[nodiscard]] std::string saveState() const;

    /// Takes over a saved state, without a break in the sound, and tells the editor but not the host. An
    /// error is a sentence that says what is wrong with the text, and then nothing has changed. Any thread
    /// but the render thread.
    [[nodiscard]] std::optional<std::string> restoreState(std::string_view text);

    /// Of the state. Any thread but the render thread.
    [[nodiscard]] EditorSize editorSize() const;
    void setEditorSize(EditorSize size);

    // Transport as the editor shows it. Any thread.

    [[nodiscard]] bool hostHasTransport() const noexcept { return transportIsKnown; }

    /// Why nothing sounds, in a few words; empty while nothing keeps the instrument from playing.
    [[nodiscard]] std::string_view transportNotice() const noexcept;

private:
    void renderCycles(float* left, float* right, int frames) noexcept VELOTRINE_NONBLOCKING;
    [[nodiscard]] bool goesOnResting() const noexcept VELOTRINE_NONBLOCKING;
    void noteWhetherItRests() noexcept VELOTRINE_NONBLOCKING;
    void connectTransport();
    bool answerMusicalContext(double* tempo, double* numerator,
                              std::int64_t* denominator) noexcept VELOTRINE_NONBLOCKING;
    void observeEdits();
    void noteEdit(const AUParameterAutomationEvent& event);
    void tellHost(ParameterAddress address, float value);

    /// While one lives, writes to the parameters from its thread are not edits.
    class QuietWriting;

    InstrumentHost& instrumentHost;
    std::shared_ptr<VelotrineAudioUnit> unit;
    CycleRenderer cycles;

    // Render thread, and others for reading what is Shared.
    HostTransport transport;
    std::int64_t framesIntoTransport = 0; ///< from the host's last word to the cycle that is about to begin
    bool isAtRest = false;                ///< the last cycle did nothing, nor will the next while all stays
    bool syncAtRest = false;
    bool internalPlayingAtRest = false;
    Shared<bool> transportIsKnown{false};
    Shared<bool> hostPlays{false};
    Shared<bool> tempoIsKnown{false}; ///< from now, or from before

    SharedAddressSet setByHost; ///< and not yet followed

    // Main thread.
    AUParameterObserverToken editsToken = 0;
    std::optional<ParameterAddress> heldParameter;

    std::atomic<std::thread::id> quietWriter{};

    mutable std::mutex stateMutex; ///< presets and states come one at a time
    EditorSize editorSize_;
    std::optional<std::uint64_t> restoredAt; ///< host clock ticks
};

} // namespace velotrine
