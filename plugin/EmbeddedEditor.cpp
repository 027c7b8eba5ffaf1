#include "plugin/EmbeddedEditor.h"

#include "plugin/EmbeddedKeyboard.h"
#include "plugin/HostedEditor.h"
#include "plugin/X11Connection.h"
#include "plugin/X11ErrorShield.h"

#include <juce_events/native/juce_linux_EventLoopInternal.h>

#include <algorithm>
#include <cmath>

namespace velotrine {

namespace {

constexpr double minScale = 0.5;
constexpr double maxScale = 8.0;

EmbeddedEditor::PixelSize toPixels(EditorSize size, double scale)
{
    const auto scaled = [scale](int points) { return static_cast<int>(std::lround(points * scale)); };
    return {scaled(size.width), scaled(size.height)};
}

EditorSize toPoints(EmbeddedEditor::PixelSize size, double scale)
{
    const auto scaled = [scale](int pixels) { return static_cast<int>(std::lround(pixels / scale)); };
    return {scaled(size.width), scaled(size.height)};
}

/// Pixels for each point, by the screen's settings.
double screenScale()
{
    const auto* const display = juce::Desktop::getInstance().getDisplays().getPrimaryDisplay();
    return display != nullptr ? display->scale : 1.0;
}

EmbeddedEditor::PixelSize screenSize()
{
    auto* const connection = x11Connection();
    if (connection == nullptr)
        return {EditorSize::maxSide, EditorSize::maxSide};
    const auto screen = DefaultScreen(connection);
    return {DisplayWidth(connection, screen), DisplayHeight(connection, screen)};
}

} // namespace

/// JUCE's side of the host's event loop. JUCE runs from the first editor to the end of the plug-in.
class EmbeddedEditor::Messages final : private juce::LinuxEventLoopInternal::Listener
{
public:
    explicit Messages(EmbeddedEditor& ownerToTell) : owner(ownerToTell)
    {
        juce::LinuxEventLoopInternal::registerLinuxEventLoopListener(*this);
    }

    ~Messages() override { juce::LinuxEventLoopInternal::deregisterLinuxEventLoopListener(*this); }

private:
    void fdCallbacksChanged() override
    {
        if (owner.onDescriptorsChanged)
            owner.onDescriptorsChanged();
    }

    EmbeddedEditor& owner;
    const bool serverIsReady = prepareX11Server();
    const juce::ScopedJuceInitialiser_GUI juce;
};

/// The window inside the host's, whose only content is the editor's view, enlarged by the scale.
class EmbeddedEditor::Window final : public juce::Component
{
public:
    explicit Window(HostedInstrument& instrument) : hostedInstrument(instrument), editor(instrument)
    {
        setOpaque(true);
        addAndMakeVisible(editor.view());
        showAt(toPixels(instrument.editorSize(), scale));
    }

    ~Window() override
    {
        keyboard.reset();
        removeFromDesktop();
    }

    bool attachTo(unsigned long parentWindow)
    {
        keyboard.reset();
        removeFromDesktop();
        addToDesktop(0, reinterpret_cast<void*>(parentWindow));
        if (getPeer() == nullptr)
            return false;
        showAt(size);
        keyboard = std::make_unique<EmbeddedKeyboard>(*this);
        return true;
    }

    void show(bool shouldBeVisible) { setVisible(shouldBeVisible); }

    void setScale(double newScale)
    {
        const auto points = toPoints(size, scale);
        scale = newScale;
        showAt(toPixels(points, scale));
    }

    void showAt(PixelSize newSize)
    {
        size = newSize;
        const auto points = toPoints(size, scale).bounded();
        editor.view().setTransform(juce::AffineTransform::scale(static_cast<float>(scale / pixelsPerUnit())));
        editor.view().setBounds(0, 0, points.width, points.height);
        const auto units = toPoints(size, pixelsPerUnit());
        setSize(units.width, units.height);
    }

    [[nodiscard]] PixelSize currentSize() const noexcept { return size; }

    [[nodiscard]] double currentScale() const noexcept { return scale; }

private:
    void paint(juce::Graphics& graphics) override { graphics.fillAll(juce::Colours::black); }

    /// Some hosts resize the window without asking.
    void resized() override
    {
        if (EditorSize{getWidth(), getHeight()} == toPoints(size, pixelsPerUnit()))
            return;
        showAt(toPixels({getWidth(), getHeight()}, pixelsPerUnit()));
        hostedInstrument.setEditorSize(toPoints(size, scale));
    }

    /// JUCE's own scale.
    [[nodiscard]] double pixelsPerUnit() const
    {
        const auto* const peer = getPeer();
        return peer != nullptr ? peer->getPlatformScaleFactor() : 1.0;
    }

    HostedInstrument& hostedInstrument;
    HostedEditor editor;
    double scale = screenScale(); ///< pixels for each point
    PixelSize size;
    std::unique_ptr<EmbeddedKeyboard> keyboard;
};

EmbeddedEditor::EmbeddedEditor(HostedInstrument& instrument) : hostedInstrument(instrument) {}

EmbeddedEditor::~EmbeddedEditor()
{
    const X11ErrorShield shield;
    close();
    messages.reset();
}

bool EmbeddedEditor::hasDisplay()
{
    return prepareX11Server();
}

void EmbeddedEditor::open()
{
    close();
    if (!messages)
        messages = std::make_unique<Messages>(*this);
    const X11ErrorShield shield;
    window = std::make_unique<Window>(hostedInstrument);
}

void EmbeddedEditor::close()
{
    const X11ErrorShield shield;
    window.reset();
}

bool EmbeddedEditor::attach(unsigned long parentWindow)
{
    const X11ErrorShield shield;
    return window && parentWindow != 0 && window->attachTo(parentWindow);
}

unsigned long EmbeddedEditor::ownWindow() const
{
    return window ? reinterpret_cast<unsigned long>(window->getWindowHandle()) : 0;
}

void EmbeddedEditor::setVisible(bool shouldBeVisible)
{
    if (!window)
        return;
    const X11ErrorShield shield;
    window->show(shouldBeVisible);
    pump();
}

bool EmbeddedEditor::setScale(double pixelsPerPoint)
{
    if (!window || !(pixelsPerPoint >= minScale && pixelsPerPoint <= maxScale))
        return false;
    const X11ErrorShield shield;
    window->setScale(pixelsPerPoint);
    return true;
}

EmbeddedEditor::PixelSize EmbeddedEditor::size() const
{
    return window ? window->currentSize() : PixelSize{};
}

EmbeddedEditor::PixelSize EmbeddedEditor::nearestSize(PixelSize wanted) const
{
    if (!window)
        return wanted;
    const auto smallest = toPixels({EditorSize::minWidth, EditorSize::minHeight}, window->currentScale());
    const auto largest = screenSize();
    return {std::clamp(wanted.width, smallest.width, std::max(smallest.width, largest.width)),
            std::clamp(wanted.height, smallest.height, std::max(smallest.height, largest.height))};
}

void EmbeddedEditor::setSize(PixelSize wanted)
{
    if (!window)
        return;
    const X11ErrorShield shield;
    window->showAt(nearestSize(wanted));
    hostedInstrument.setEditorSize(toPoints(window->currentSize(), window->currentScale()));
}

std::vector<int> EmbeddedEditor::descriptors() const
{
    return messages ? juce::LinuxEventLoopInternal::getRegisteredFds() : std::vector<int>{};
}

void EmbeddedEditor::pump()
{
    if (!messages)
        return;
    const X11ErrorShield shield;
    auto& manager = *juce::MessageManager::getInstance();
    if (!manager.isThisTheMessageThread())
        manager.setCurrentThreadAsMessageThread();
    // Handling one descriptor can leave work for another that has nothing to read itself.
    for (const auto descriptor : descriptors())
        juce::LinuxEventLoopInternal::invokeEventLoopCallbackForFd(descriptor);
}

} // namespace velotrine
