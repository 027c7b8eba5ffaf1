#pragma once

#include <vector>

namespace velotrine {

/// Which beat comes when, where the tempo may change and glide. A glide becomes steps of a sixteenth of a
/// quarter, each with the mean of its tempo, so that nothing is off at their ends.
class TempoMap
{
public:
    /// From where on a tempo holds.
    struct Step
    {
        double seconds;
        double quarters; ///< since the beginning
        double quartersPerMinute;
    };

    /// @param quartersPerMinute  from the beginning on, above 0
    explicit TempoMap(double quartersPerMinute) : latest{0.0, 0.0, quartersPerMinute} {}

    /// Another tempo from a time on, which is not before that of the call before.
    void set(double seconds, double quartersPerMinute);

    /// The first one at 0.
    [[nodiscard]] std::vector<Step> steps() const;

    /// Quarters since the beginning.
    /// @param steps    as steps() gives them
    /// @param seconds  0 or more
    [[nodiscard]] static double quartersAt(const std::vector<Step>& steps, double seconds);

private:
    struct Point
    {
        double seconds;
        double quarters;
    };

    std::vector<Point> points{{0.0, 0.0}}; ///< where steps meet
    Step latest;
};

} // namespace velotrine
