#include "editor/ConcentricCirclesViewMac.h"

#include "editor/AccessibleValue.h"
#include "editor/Colours.h"
#include "editor/KeyTurn.h"
#include "editor/PixelContext.h"
#include "engine/FatalError.h"
#include "engine/HostClock.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <span>
#include <utility>

namespace velotrine {

namespace {

constexpr double secondsPerTick = 1.0 / 60.0;
constexpr double flashSeconds = 0.35;
constexpr double minSpotRadius = 4.0;  ///< points
constexpr double innermostRing = 0.35; ///< of the outermost ring's radius

// How a stopped display goes home: turns a tick, and near enough to be there.
constexpr double homeStep = 0.02;
constexpr double homeEnough = 0.001;
constexpr double wobbleDecay = 0.85;

constexpr double minHitTolerance = 12.0;  ///< points
constexpr double lonelyRingSpacing = 0.3; ///< of its radius

juce::Point<double> pointAt(juce::Point<double> centre, double radius, double phaseTurns)
{
    const auto angle = phaseTurns * 2.0 * std::numbers::pi - std::numbers::pi / 2.0;
    return {centre.x + radius * std::cos(angle), centre.y + radius * std::sin(angle)};
}

juce::Rectangle<float> circleAbout(juce::Point<double> centre, double radius)
{
    return juce::Rectangle<double>(2.0 * radius, 2.0 * radius).withCentre(centre).toFloat();
}

/// @param flash  0 for none, 1 at the moment of firing
juce::Colour spotColour(float flash)
{
    return flash > 0.0f ? colours::background.overlaidWith(juce::Colours::white.withAlpha(flash))
                        : colours::background;
}

/// A point on fractions of a pixel: a shape that has moved by less looks the same, and stays.
juce::Point<float> onFractions(juce::Point<float> pixel)
{
    constexpr float fractions = 16.0f;
    return {std::round(pixel.x * fractions) / fractions, std::round(pixel.y * fractions) / fractions};
}

/// Not where the window is minimised, or covered by others as far as the X server tells us: behind a
/// compositor no window ever is (cmake/JuceCorrections.cmake).
bool canBeSeen(const juce::Component& component)
{
    static const juce::Identifier covered("covered");
    return component.isShowing() && !component.getTopLevelComponent()->getProperties()[covered];
}

/// One tick of a phase on its shorter way to 12 o'clock.
double nearerToHome(double phaseTurns)
{
    if (phaseTurns < homeEnough || phaseTurns > 1.0 - homeEnough)
        return 0.0;
    if (phaseTurns <= 0.5)
        return std::max(0.0, phaseTurns - homeStep);
    const auto next = phaseTurns + homeStep;
    return next >= 1.0 ? 0.0 : next;
}

double secondsBetween(std::uint64_t earlier, std::uint64_t later)
{
    return static_cast<double>(later - earlier) * hostClockSecondsPerTick;
}

} // namespace

ConcentricCirclesViewMac::ConcentricCirclesViewMac()
{
    setTitle("Rings");
    setRepaintsOnMouseActivity(false);
    wake();
}

ConcentricCirclesViewMac::Geometry ConcentricCirclesViewMac::measured() const
{
    const auto bounds = getLocalBounds().toDouble();
    Geometry result;
    result.side = std::min(bounds.getWidth(), bounds.getHeight());
    result.strokeWidth = std::max(1.0, 2.0 * result.side / 300.0);
    result.centre = bounds.getCentre();
    const auto outermost =
        result.side * 0.5 - (result.strokeWidth + std::max(minSpotRadius, result.side * spotFraction));
    const auto count = spotsPerRing.size();
    const auto gaps = static_cast<double>(std::max<std::size_t>(count, 2) - 1);
    for (std::size_t ring = 0; ring < count; ++ring) {
        const auto inner = innermostRing * outermost;
        result.radii.push_back(inner + (outermost - inner) * static_cast<double>(ring) / gaps);
    }
    result.spotRadius = std::max(minSpotRadius, outermost * spotFraction);
    return result;
}

void ConcentricCirclesViewMac::paint(juce::Graphics& graphics)
{
    if (getLocalBounds().isEmpty()) {
        geometry = measured();
        return;
    }
    // A part is painted as it was last shown, or what has changed elsewhere would be missed there.
    const auto grid = pixelGridOf(*this, graphics);
    const bool isWhole = graphics.getClipBounds().contains(getLocalBounds());
    if (grid != picture.grid()) {
        showNow(grid);
        if (!isWhole)
            repaint();
    } else if (isWhole) {
        repaintChanges(showNow(grid));
    }
    paintShown(graphics);
}

/// Straight into the window; where that cannot be, as in a picture of the view, by an image of its own.
void ConcentricCirclesViewMac::paintShown(juce::Graphics& graphics) const
{
    const auto& grid = picture.grid();
    if (auto* const window = dynamic_cast<PixelContext*>(&graphics.getInternalContext()))
        if (const auto pixels = window->pixelsOf(grid))
            return picture.paint(*pixels, backdrop);
    juce::Image image(juce::Image::ARGB, grid.width, grid.height, true, juce::SoftwareImageType());
    picture.paint({.image = image, .origin = {}, .clip = image.getBounds()}, backdrop);
    graphics.setOpacity(1.0f);
    graphics.drawImageTransformed(image, grid.fromPoints().inverted());
}

std::span<const juce::Rectangle<int>> ConcentricCirclesViewMac::showNow(const PixelGrid& grid)
{
    geometry = measured();
    measureFrame(grid, hostClock());
    return picture.show(frame, grid);
}

void ConcentricCirclesViewMac::measureFrame(const PixelGrid& grid, std::uint64_t now)
{
    frame.centre = grid.pixelAt(geometry.centre);
    frame.hand = grey(0.5f);
    frame.handWidth = grid.pixels(std::max(0.5, geometry.strokeWidth * 0.5));
    frame.dotRadius = grid.pixels(std::max(2.0, geometry.side * 0.008));
    frame.lineWidth = grid.pixels(geometry.strokeWidth);
    frame.spotRadius = grid.pixels(geometry.spotRadius);
    frame.handTip.reset();
    if (!geometry.radii.empty() && geometry.radii.back() > 0.0)
        frame.handTip =
            onFractions(grid.pixelAt(pointAt(geometry.centre, geometry.radii.back(), displayedClockPhase)));
    frame.rings.resize(spotsPerRing.size());
    for (std::size_t ring = 0; ring < frame.rings.size(); ++ring)
        measureRing(grid, ring, now);
}

void ConcentricCirclesViewMac::measureRing(const PixelGrid& grid, std::size_t ring, std::uint64_t now)
{
    const auto spots = spotsPerRing[ring];
    if (spots < 0)
        fatalError("a ring has a negative number of spots");
    if (ring >= ringPhaseOffsets.size())
        fatalError("a ring is drawn that has no phases");

    auto& measured = frame.rings[ring];
    measured.radius = grid.pixels(geometry.radii[ring]);
    measured.line = lineColour(ring);
    measured.spots.resize(static_cast<std::size_t>(spots));
    const auto rotation = displayedLfoOffsets[ring] + displayedActivityPhases[ring] +
                          static_cast<double>(ringPhaseOffsets[ring]);
    for (std::int64_t spot = 0; spot < spots; ++spot) {
        const auto phase = static_cast<double>(spot) / static_cast<double>(spots) + rotation;
        const auto index = static_cast<std::int64_t>(ring) * spotsPerRingMax + spot;
        const auto flash = spotFireTimes != nullptr ? flashAlpha(spotFireTimes[index], now) : 0.0f;
        measured.spots[static_cast<std::size_t>(spot)] = {
            .centre = onFractions(grid.pixelAt(pointAt(geometry.centre, geometry.radii[ring], phase))),
            .fill = spotColour(flash)};
    }
}

/// Asks for parts of the picture to be drawn on the screen.
void ConcentricCirclesViewMac::repaintChanges(std::span<const juce::Rectangle<int>> changes)
{
    for (const auto& change : changes)
        repaintPixels(*this, picture.grid(), change);
}

juce::Colour ConcentricCirclesViewMac::lineColour(std::size_t ring) const
{
    if (!selectedRing)
        return juce::Colours::white;
    return *selectedRing == static_cast<int>(ring) ? juce::Colours::black
                                                   : juce::Colours::white.withAlpha(0.2f);
}

float ConcentricCirclesViewMac::flashAlpha(std::uint64_t fireTime, std::uint64_t now) const
{
    if (fireTime == 0 || fireTime > now)
        return 0.0f;
    return static_cast<float>(1.0 - secondsBetween(fireTime, now) / flashSeconds);
}

void ConcentricCirclesViewMac::redraw()
{
    // Without a picture of this size, painting makes one.
    const auto& grid = picture.grid();
    if (grid.width == 0)
        repaint();
    else
        repaintChanges(showNow(grid));
}

void ConcentricCirclesViewMac::resized()
{
    picture = {};
}

double ConcentricCirclesViewMac::livePhase() const
{
    return clockPhase != nullptr ? clockPhase->load() : 0.0;
}

void ConcentricCirclesViewMac::refreshTick()
{
    lastClockPhase = livePhase();
    if (lastClockPhase != 0.0)
        showLivePhases();
    else
        easeHome();
}

void ConcentricCirclesViewMac::wake()
{
    quietSince.reset();
    stopTimer();
    if (screen)
        return;
    screen.emplace(this, [this] { screenIsReady(); });
    repaint(0, 0, 1, 1); // a window in which nothing is to be painted has stopped asking the screen
}

void ConcentricCirclesViewMac::screenIsReady()
{
    if (!canBeSeen(*this))
        return rest();
    const auto now = juce::Time::getMillisecondCounterHiRes() * 1.0e-3;
    screenRefreshed(now);
    restIfQuiet(now);
}

/// Being asked by the screen costs more than anything else while the rings stand still.
void ConcentricCirclesViewMac::restIfQuiet(double nowSeconds)
{
    constexpr double patienceSeconds = 1.0;
    if (isMoving)
        quietSince.reset();
    else if (!quietSince)
        quietSince = nowSeconds;
    else if (nowSeconds - *quietSince > patienceSeconds)
        rest();
}

void ConcentricCirclesViewMac::rest()
{
    constexpr int looksPerSecond = 10;
    if (!isTimerRunning())
        startTimerHz(looksPerSecond);
}

void ConcentricCirclesViewMac::timerCallback()
{
    screen.reset();
    if (!canBeSeen(*this))
        return;
    refreshTick();
    if (isMoving)
        wake();
}

void ConcentricCirclesViewMac::showLivePhases()
{
    displayedClockPhase = lastClockPhase;
    for (std::size_t ring = 0; ring < displayedActivityPhases.size(); ++ring) {
        displayedActivityPhases[ring] = activityPhases != nullptr ? activityPhases[ring].load() : 0.0;
        displayedLfoOffsets[ring] = lfoOffsets != nullptr ? lfoOffsets[ring].load() : 0.0;
    }
    isMoving = true;
    isFlashing = true; // perhaps
    redraw();
}

void ConcentricCirclesViewMac::easeHome()
{
    isMoving = displayedClockPhase > homeEnough;
    displayedClockPhase = nearerToHome(displayedClockPhase);
    for (auto& phase : displayedActivityPhases) {
        isMoving = isMoving || phase > homeEnough;
        phase = nearerToHome(phase);
    }
    for (auto& offset : displayedLfoOffsets) {
        const auto isAway = std::abs(offset) > homeEnough;
        isMoving = isMoving || isAway;
        offset = isAway ? offset * wobbleDecay : 0.0;
    }
    // After the last of a flash, the spot without it is still to be drawn.
    const bool flashed = std::exchange(isFlashing, anySpotFlashes());
    isMoving = isMoving || isFlashing || flashed;
    if (isMoving)
        redraw();
}

bool ConcentricCirclesViewMac::anySpotFlashes() const
{
    if (spotFireTimes == nullptr)
        return false;
    const auto now = hostClock();
    const std::span times(spotFireTimes, static_cast<std::size_t>(ringCount * spotsPerRingMax));
    return std::ranges::any_of(times, [now](const auto& time) {
        const std::uint64_t fired = time;
        return fired != 0 && (now < fired || secondsBetween(fired, now) < flashSeconds);
    });
}

void ConcentricCirclesViewMac::mouseDown(const juce::MouseEvent& event)
{
    if (!isPrimaryButton(event))
        return;
    if (selectedRing) {
        selectedRing.reset();
        redraw();
        if (onRingDeselected)
            onRingDeselected();
        return;
    }
    selectedRing = ringAt(event.position.toDouble());
    if (!selectedRing)
        return;
    keyboardRing = *selectedRing;
    redraw();
    if (onRingSelected)
        onRingSelected(*selectedRing);
}

bool ConcentricCirclesViewMac::keyPressed(const juce::KeyPress& key)
{
    if (key.isKeyCode(juce::KeyPress::returnKey)) {
        keyIsUsed();
        if (onRingOpenedByKey)
            onRingOpenedByKey(keyboardRing);
        return true;
    }
    // A ring further out is the larger number.
    const auto turn = valueTurnOf(key);
    if (turn) {
        keyboardRing = turnedIndex(keyboardRing, static_cast<int>(spotsPerRing.size()), *turn);
        keyIsUsed();
        if (auto* handler = getAccessibilityHandler())
            handler->notifyAccessibilityEvent(juce::AccessibilityEvent::valueChanged);
    }
    return turn.has_value();
}

/// A band along the ring, wide enough for its spots.
void ConcentricCirclesViewMac::drawMark(juce::Graphics& graphics) const
{
    const auto ring = static_cast<std::size_t>(keyboardRing);
    if (ring >= geometry.radii.size())
        return;
    constexpr double airPoints = 6.0;
    graphics.setColour(colours::focusBand);
    graphics.drawEllipse(circleAbout(geometry.centre, geometry.radii[ring]),
                         static_cast<float>(2.0 * geometry.spotRadius + airPoints));
}

juce::String ConcentricCirclesViewMac::valueText() const
{
    const auto spots = spotsPerRing[static_cast<std::size_t>(keyboardRing)];
    return "Ring " + juce::String(keyboardRing + 1) + ", " + juce::String(spots) +
           (spots == 1 ? " spot" : " spots");
}

std::unique_ptr<juce::AccessibilityHandler> ConcentricCirclesViewMac::createAccessibilityHandler()
{
    return makeButtonHandler(
        *this, [this] { return valueText(); },
        [this] {
            if (onRingOpenedByKey)
                onRingOpenedByKey(keyboardRing);
        });
}

std::optional<int> ConcentricCirclesViewMac::ringAt(juce::Point<double> point) const
{
    const auto& radii = geometry.radii;
    if (radii.empty())
        return std::nullopt;
    const auto distance = geometry.centre.getDistanceFrom(point);
    const auto nearest = std::ranges::min_element(
        radii, {}, [distance](double radius) { return std::abs(distance - radius); });
    const auto spacing = radii.size() > 1
                             ? (radii.back() - radii.front()) / static_cast<double>(radii.size() - 1)
                             : radii.front() * lonelyRingSpacing;
    if (std::abs(distance - *nearest) > std::max(spacing * 0.5, minHitTolerance))
        return std::nullopt;
    return static_cast<int>(std::distance(radii.begin(), nearest));
}

void ConcentricCirclesViewMac::screenRefreshed(double nowSeconds)
{
    // A screen that did not show for a while has nothing to catch up on.
    constexpr double longestAbsence = 0.25;
    if (livePhase() != 0.0 || nowSeconds - nextTickSeconds > longestAbsence) {
        refreshTick();
        nextTickSeconds = nowSeconds + secondsPerTick;
        return;
    }
    // The clock's own rounding must not make a step come one refresh late.
    constexpr double tolerance = 0.1 * secondsPerTick;
    for (; nextTickSeconds <= nowSeconds + tolerance; nextTickSeconds += secondsPerTick)
        refreshTick();
}

} // namespace velotrine
