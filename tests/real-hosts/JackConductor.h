#pragma once

#include "audiounit/NoteOutput.h"

#include <jack/jack.h>

#include <atomic>
#include <string>
#include <vector>

namespace velotrine {

/// What JACK's transport does, in server cycles from the start.
struct JackScore
{
    int start = 0;
    int tempoChange = 0;
    int stop = 0;
    int end = 0;
    double tempo = 120.0;      ///< quarter notes a minute
    double laterTempo = 120.0; ///< from the change on
};

/// What was heard, and what JACK's transport was doing meanwhile.
struct JackTake
{
    struct Cycle
    {
        bool isRolling = false;
        double tempo = 0.0; ///< 0 while there is none
        int frames = 0;
    };

    std::vector<float> left;
    std::vector<float> right;
    std::vector<NoteMessage> notes; ///< by frames of the sound
    std::vector<Cycle> cycles;
};

/// A client that leads the transport and its tempo by a score, and listens to another client's outputs: two
/// of sound and one of notes.
/// Throws when there is no server.
class JackConductor
{
public:
    JackConductor();
    ~JackConductor();
    JackConductor(const JackConductor&) = delete;
    JackConductor& operator=(const JackConductor&) = delete;

    /// Waits for the client and its two ports. False if it does not come.
    [[nodiscard]] bool listenTo(const std::string& clientName);

    /// The same for its port of notes.
    [[nodiscard]] bool listenToNotesOf(const std::string& clientName);

    /// Connects two ports of others. Waits for both; false if they do not come.
    [[nodiscard]] bool connect(const std::string& output, const std::string& input);

    /// @param isFreewheeling  as fast as possible, instead of in real time
    [[nodiscard]] JackTake perform(const JackScore& score, bool isFreewheeling);

private:
    void process(jack_nframes_t frames);

    jack_client_t* client;
    jack_port_t* left = nullptr;
    jack_port_t* right = nullptr;
    jack_port_t* notes = nullptr;

    // The server's thread, while it performs.
    JackScore score;
    JackTake take;
    std::atomic<double> tempo{120.0};
    std::atomic<bool> isPerforming{false};
    std::atomic<int> cyclesHeard{0};
};

} // namespace velotrine
