#pragma once

#include "audiounit/Settings.h"

#include <cstddef>
#include <deque>
#include <string>

namespace velotrine {

/// What a person has done to the settings, step by step, to be taken back and done again.
///
/// A step knows what it changed, and from what to what. Taking it back changes only that, and only as far as
/// it is still what the step made it: what somebody else has set in the meantime, such as a host's
/// automation, stays. A step of which nothing is left that way is passed over. One thread.
class UndoHistory
{
public:
    static constexpr std::size_t mostSteps = 1000;

    /// Adds a step; what had been taken back by then is forgotten, and the oldest step when there are too
    /// many. Nothing happens where nothing differs.
    /// @param name  of what was done, for the menu: "Boredom"
    void add(std::string name, const Settings& before, const Settings& after);

    /// What undo() would take back; empty for nothing.
    /// @param now  the settings in force
    [[nodiscard]] std::string undoName(const Settings& now) const;

    /// What redo() would do again; empty for nothing.
    [[nodiscard]] std::string redoName(const Settings& now) const;

    /// The settings with the last step taken back; the same ones if there is none.
    [[nodiscard]] Settings undo(const Settings& now);

    /// The settings with the step done again that was taken back last; the same ones if there is none.
    [[nodiscard]] Settings redo(const Settings& now);

private:
    struct Step
    {
        std::string name;
        Settings before;
        Settings after;
    };

    [[nodiscard]] std::size_t undoPlace(const Settings& now) const;
    [[nodiscard]] std::size_t redoPlace(const Settings& now) const;

    std::deque<Step> steps;
    std::size_t done = 0; ///< of the steps; those behind have been taken back
};

} // namespace velotrine
