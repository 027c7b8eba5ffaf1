#pragma once

#include "audiounit/CycleRenderer.h"
#include "audiounit/NoteOutput.h"
#include "audiounit/NoteStream.h"
#include "audiounit/SampleRateRange.h"
#include "audiounit/StereoOutput.h"
#include "audiounit/UndoHistory.h"
#include "audiounit/VelotrineAudioUnit.h"
#include "engine/AddressSet.h"
#include "engine/Nonblocking.h"
#include "engine/Shared.h"
#include "plugin/HostTransport.h"
#include "plugin/HostedState.h"
#include "plugin/InstrumentHost.h"
#include "plugin/ThreadChecks.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace velotrine {

/// The instrument inside a music host, whatever the plug-in format: it renders in short cycles of its own,
/// follows the host's transport, checks all that the host hands over, and carries edits between host, engine
/// and editor. Nothing that a host does stops a release build; a debug build checks threads (ThreadChecks.h).
///
/// Threads: render thread and main thread as said below; functions that say "any thread" never wait.
class HostedInstrument
{
public:
    /// Whether the instrument can play at a rate, in Hz.
    [[nodiscard]] static constexpr bool takesSampleRate(double sampleRate) noexcept
    {
        return isPlayable(sampleRate);
    }

    /// A program that a host sends sooner than this after a state is part of loading a session, not a
    /// musician's choice.
    static constexpr double programHoldSeconds = 0.5;

    /// @param host  told of edits; outlives the instrument
    explicit HostedInstrument(InstrumentHost& host);
    ~HostedInstrument();
    HostedInstrument(const HostedInstrument&) = delete;
    HostedInstrument& operator=(const HostedInstrument&) = delete;

    /// What an editor controls and shows. Do not render with it.
    [[nodiscard]] const std::shared_ptr<VelotrineAudioUnit>& audioUnit() const noexcept { return unit; }

    // Rendering

    /// Gets ready to render; all sound ends and the clock goes back to its start. False, and not ready, for a
    /// sample rate that no device has. Throws, and is not ready, if memory runs out. Main thread, while
    /// nothing renders.
    [[nodiscard]] bool prepare(double sampleRate);

    /// Undoes prepare(). Main thread, while nothing renders.
    void release();

    /// Ends all sound and all notes and puts the clock back to its start. Render thread.
    void reset() noexcept VELOTRINE_NONBLOCKING;

    /// The host's transport from the next frame on; it takes effect with the next render cycle. None for a
    /// host without one: what was last known stays in force. Render thread.
    void setTransport(const std::optional<HostTransport>& transport) noexcept VELOTRINE_NONBLOCKING;

    /// Fills the output. Silence while not ready. Values set between two calls take effect with the next
    /// render cycle, so a host that wants a value at a certain frame renders up to it first. Render thread.
    /// @param frames  any number; none for fewer than 1
    /// @param notes   gets the notes, each at its crossing's frame (NoteStream). What prepare(), release() or
    ///                reset() ended goes up at the first frame of the next call
    void render(StereoOutput output, int frames, const NoteOutput& notes = {}) noexcept VELOTRINE_NONBLOCKING;

    /// In place of render() where a host passes the instrument over: all notes end. Render thread.
    void pause(const NoteOutput& notes) noexcept VELOTRINE_NONBLOCKING;

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

    /// The same for a number that the host sends of its own accord, except right after a state: the state
    /// stays.
    bool chooseProgram(std::size_t number);

    /// The preset last chosen, by hand or by a state; 0 if none was.
    [[nodiscard]] std::size_t presetNumber() const;

    // Settings as a whole

    /// Any thread but the render thread.
    [[nodiscard]] Settings settings() const;

    /// Writes what differs between the two, as an edit in the window, and tells the host. Main thread.
    void edit(const Settings& from, const Settings& to);

    /// What can be undone in the editor; it outlives each editor. Main thread.
    [[nodiscard]] const std::shared_ptr<UndoHistory>& undoHistory() const noexcept { return history; }

    // State

    /// Any thread but the render thread.
    [[nodiscard]] std::string saveState() const;

    /// Restores a saved state without a break in the sound; tells the editor but not the host. Where the text
    /// is no state, nothing changes, and the result is a sentence that says what is wrong with it. Any thread
    /// but the render thread.
    [[nodiscard]] std::optional<std::string> restoreState(std::string_view text);

    /// Part of the state. Any thread but the render thread.
    [[nodiscard]] EditorSize editorSize() const;
    void setEditorSize(EditorSize size);

    // Transport as the editor shows it. Any thread.

    [[nodiscard]] bool hostHasTransport() const noexcept { return transportIsKnown; }

    /// Why nothing sounds, in a few words; empty while nothing keeps the instrument from playing.
    [[nodiscard]] std::string_view transportNotice() const noexcept;

private:
    void dropRenderResources();
    void endAtOnce() noexcept VELOTRINE_NONBLOCKING;
    void renderCycles(StereoOutput output, int frames,
                      const NoteOutput& notes) noexcept VELOTRINE_NONBLOCKING;
    [[nodiscard]] bool goesOnResting() const noexcept VELOTRINE_NONBLOCKING;
    void noteWhetherItRests() noexcept VELOTRINE_NONBLOCKING;
    void connectTransport();
    bool answerMusicalContext(double* tempo, double* numerator,
                              std::int64_t* denominator) noexcept VELOTRINE_NONBLOCKING;
    void observeEdits();
    void noteEdit(const AUParameterAutomationEvent& event);
    void tellHost(ParameterAddress address, float value);

    /// Of prepare(), release(), reset(), setTransport() and render(), no two at a time.
    ExclusiveCalls<> renderCalls;

    InstrumentHost& instrumentHost;
    std::shared_ptr<VelotrineAudioUnit> unit;
    CycleRenderer cycles;

    // Render thread, and others for reading what is Shared.
    NoteStream noteStream;
    HostTransport transport;
    std::int64_t framesIntoTransport = 0; ///< from the host's last report to the cycle that is about to begin
    bool isAtRest = false; ///< the last cycle did nothing, nor will the next until something changes
    bool syncAtRest = false;
    bool internalPlayingAtRest = false;
    Shared<bool> transportIsKnown{false};
    Shared<bool> hostPlays{false};
    Shared<bool> tempoIsKnown{false}; ///< now, or from earlier

    SharedAddressSet setByHost; ///< and not yet followed

    // Main thread.
    const std::shared_ptr<UndoHistory> history = std::make_shared<UndoHistory>();
    AUParameterObserverToken editsToken = 0;
    std::optional<ParameterAddress> heldParameter;

    mutable std::mutex stateMutex; ///< presets and states are applied one at a time
    EditorSize editorSize_;
    std::optional<std::uint64_t> restoredAt; ///< host clock ticks
};

} // namespace velotrine
