#pragma once

#include "editor/Control.h"
#include "editor/PixelGrid.h"
#include "editor/RingsPicture.h"
#include "engine/HostClock.h"
#include "engine/RingCount.h"
#include "engine/Shared.h"

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace velotrine {

/// The rings, their spots and the hand, as the kernel publishes them. A click on a ring selects it, the next
/// click anywhere lets it go. Arrow keys go from ring to ring, Return opens the one that is marked. Main
/// thread; what the pointers lead to is written by the render thread.
class ConcentricCirclesViewMac final : public Control<juce::Component>, private juce::Timer
{
public:
    ConcentricCirclesViewMac();

    /// Spots drawn on each ring, 0 or more; as many rings as entries.
    std::vector<std::int64_t> spotsPerRing{4, 5, 6, 7, 8};

    /// Radius of a spot: this fraction of the outermost ring's, but at least 4 points.
    double spotFraction = 0.04;

    /// The kernel's display state, or nothing before there is one. HostClock ticks, ring after ring; phases
    /// in turns, one for each ring; a clock phase of exactly 0 says that the clock is stopped.
    const Shared<std::uint64_t>* spotFireTimes = nullptr;
    std::int64_t spotsPerRingMax = 16;
    const Shared<double>* clockPhase = nullptr;
    const Shared<double>* activityPhases = nullptr;
    const Shared<double>* lfoOffsets = nullptr;

    /// By which flashes fade: the clock of the fire times.
    std::function<std::uint64_t()> hostClock = hostClockNow;

    double lastClockPhase = -1.0; ///< at the last tick; 0 while stopped

    /// What is drawn, in turns.
    double displayedClockPhase = 0.0;
    std::array<double, ringCount> displayedActivityPhases{};
    std::array<double, ringCount> displayedLfoOffsets{};

    std::optional<int> selectedRing;

    /// Where the keyboard is among the rings.
    int keyboardRing = 0;

    /// What lies behind the view, if that is one opaque colour: drawing is cheaper when it is known. Without
    /// it the view is transparent.
    std::optional<juce::Colour> backdrop;

    /// Copies of the rings' parameters. Those not drawn are here for the ring's panel.
    std::array<std::int64_t, ringCount> ringSpotCounts{4, 5, 6, 7, 8};
    std::array<float, ringCount> ringPhaseOffsets{}; ///< turns
    std::array<float, ringCount> ringProbabilities{0.75f, 0.75f, 0.75f, 0.75f, 0.75f};

    std::function<void(int ring)> onRingSelected;

    /// A click has let the selected ring go.
    std::function<void()> onRingDeselected;

    /// A key asks for a ring, whichever is selected.
    std::function<void(int ring)> onRingOpenedByKey;

    /// Points, in this view, of what was drawn last.
    [[nodiscard]] juce::Point<double> cachedCenter() const noexcept { return geometry.centre; }

    /// Innermost first.
    [[nodiscard]] const std::vector<double>& cachedRadii() const noexcept { return geometry.radii; }

    [[nodiscard]] double cachedStrokeWidth() const noexcept { return geometry.strokeWidth; }

    /// One step of the animation, of which a second has 60.
    void refreshTick();

    /// The screen shows a new picture. While the clock runs, each shows the rings as they are then; after it
    /// has stopped, they go home by as many steps as sixtieths of a second have passed.
    /// @param nowSeconds  of any clock that only goes forward
    void screenRefreshed(double nowSeconds);

    /// Asks for what has changed to be drawn anew: a hand that has moved, a spot that has moved or flashes.
    void redraw();

    /// The clock may start now. Without a word, the rings notice within a tenth of a second.
    void wake();

    void paint(juce::Graphics& graphics) override;
    void resized() override;
    void mouseDown(const juce::MouseEvent& event) override;
    bool keyPressed(const juce::KeyPress& key) override;
    std::unique_ptr<juce::AccessibilityHandler> createAccessibilityHandler() override;

    /// Where everything lies for a view of this size.
    struct Geometry
    {
        juce::Point<double> centre;
        std::vector<double> radii;
        double strokeWidth = 2.0;
        double spotRadius = 4.0;
        double side = 0.0; ///< the lesser of width and height
    };

private:
    [[nodiscard]] Geometry measured() const;
    void paintShown(juce::Graphics& graphics) const;
    std::span<const juce::Rectangle<int>> showNow(const PixelGrid& grid);
    void measureFrame(const PixelGrid& grid, std::uint64_t now);
    void measureRing(const PixelGrid& grid, std::size_t ring, std::uint64_t now);
    void repaintChanges(std::span<const juce::Rectangle<int>> changes);
    [[nodiscard]] juce::Colour lineColour(std::size_t ring) const;
    [[nodiscard]] float flashAlpha(std::uint64_t fireTime, std::uint64_t now) const;
    [[nodiscard]] bool anySpotFlashes() const;
    [[nodiscard]] std::optional<int> ringAt(juce::Point<double> point) const;
    void drawMark(juce::Graphics& graphics) const override;
    [[nodiscard]] juce::String valueText() const;
    [[nodiscard]] double livePhase() const;
    void screenIsReady();
    void restIfQuiet(double nowSeconds);
    void rest();
    void timerCallback() override;
    void showLivePhases();
    void easeHome();

    Geometry geometry;
    RingsFrame frame; ///< kept for its memory
    RingsPicture picture;
    double nextTickSeconds = 0.0; ///< on the way home
    bool isMoving = false;        ///< at the last tick, or flashing
    bool isFlashing = false;      ///< at the last tick
    std::optional<double> quietSince;
    std::optional<juce::VBlankAttachment> screen; ///< none while at rest
};

} // namespace velotrine
