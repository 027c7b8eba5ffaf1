#pragma once

#include "takes/TakeAssembler.h"
#include "takes/TakeLog.h"
#include "takes/TakeTap.h"

#include <juce_events/juce_events.h>

#include <atomic>
#include <functional>
#include <future>
#include <optional>
#include <string>
#include <vector>

namespace velotrine {

/// Where takes go.
struct TakePlaces
{
    juce::File music; ///< the folder for those that are kept; made with the first
    juce::File state; ///< what survives the program that is killed

    /// "Velotrine" in the user's music folder and in the folder for states, which is XDG_STATE_HOME where
    /// that names one.
    [[nodiscard]] static TakePlaces ofUser();
};

/// Remembers what an instrument plays, take by take, and writes the last one to files when it is asked to:
/// the take, its sound and its notes. Main thread, but for note().
class TakeKeeper final : private juce::Timer
{
public:
    /// Writes a take's files, whole or not at all: what is called, and endings behind it. Called on a thread
    /// of its own; throws what std::exception can say.
    using Writer = std::function<void(const Take& take, const std::string& pathWithoutEnding,
                                      const std::function<void(double fraction)>& progress)>;

    TakeKeeper(const TakePlaces& newPlaces, Writer newWriter);

    /// Waits until what is being written is written.
    ~TakeKeeper() override;

    TakeKeeper(const TakeKeeper&) = delete;
    TakeKeeper& operator=(const TakeKeeper&) = delete;

    /// Listens to a render cycle that has just ended. Render thread.
    void note(const VelotrineDSPKernel& kernel, int frames) noexcept VELOTRINE_NONBLOCKING
    {
        tap.note(kernel, frames);
    }

    /// Writes everything since the instrument last began to play, and what a killed program left behind.
    /// Says through onNotice how far it is and what has come of it.
    /// @param name  for the files, behind date and time
    void keepLastTake(const juce::String& name);

    /// Takes that were being played when a program was killed.
    [[nodiscard]] bool hasTakesLeftBehind() const noexcept { return !leftBehind.empty(); }

    /// What a person should know. What goes on is said again and again.
    std::function<void(const juce::String& text, bool goesOn)> onNotice;

private:
    struct Job
    {
        Take take;
        juce::File file; ///< without an ending
    };

    void timerCallback() override;
    void collect();
    juce::String outcome();
    [[nodiscard]] std::optional<Take> lastTake() const;
    [[nodiscard]] juce::File freeName(const juce::String& name) const;
    void say(const juce::String& text, bool goesOn = false) const;

    /// @return  what came of it
    juce::String write(const std::vector<Job>& jobs);

    TakePlaces places;
    Writer writer;
    TakeTap tap;
    TakeAssembler assembler;
    TakeLog log;
    std::optional<Take> lastFinished;
    std::vector<Take> leftBehind;

    std::atomic<double> progress{0.0};
    std::atomic<bool> hasFailed{false};
    std::future<juce::String> writing;
};

} // namespace velotrine
