#pragma once

#include "tests/plugin/Lv2Host.h"
#include "tests/plugin/Lv2Notes.h"
#include "tests/plugin/PluginUnderTest.h"

#include <map>
#include <memory>

namespace velotrine {

/// The format gives an instance its sample rate for life: at another rate, the host makes another instance
/// and loads the state of the first. Without an instance, it is silent.
class Lv2UnderTest final : public PluginUnderTest
{
public:
    static constexpr auto formatName = "Lv2";

    Lv2UnderTest();

    using PluginUnderTest::openEditor;

    bool start(double sampleRate, int maxFrames) override;
    void stop() override;
    void setTransport(const std::optional<HostTransport>& transport) override;
    void setValue(ParameterAddress address, double value) override;
    bool render(float* left, float* right, int frames) override;

    [[nodiscard]] const std::vector<NoteMessage>& notes() const override { return heard; }

    void setRoomForNotes(int messages) override { roomForNotes = static_cast<std::size_t>(messages); }

    [[nodiscard]] double value(ParameterAddress address) const override;
    [[nodiscard]] std::string save() const override;
    bool load(const std::string& state) override;
    bool openEditor(XWindow parent, double scale) override;
    void closeEditor() override;
    bool resizeEditor(int width, int height) override;
    void runLoop(std::chrono::milliseconds duration) override;
    [[nodiscard]] const std::vector<std::string>& edits() const override;
    [[nodiscard]] std::vector<HostMistake> forbiddenCalls() override;

private:
    using Sequence = std::vector<std::uint64_t>;

    void makeInstance(double sampleRate);

    /// Hosts leave a port alone whose place has not changed.
    void connect(std::uint32_t port, void* data);

    Lv2Library library;
    std::unique_ptr<Lv2Host> host;
    double rate = 0.0;
    std::optional<HostTransport> saidLast;
    Sequence nothing;     ///< what the time port reads while nothing changes
    Sequence news;        ///< and when something has
    bool hasNews = false; ///< for the next block
    std::map<std::uint32_t, void*> connected;
    std::optional<Lv2Notes> notePort;
    std::vector<NoteMessage> heard;
    std::size_t roomForNotes = Lv2Notes::mostMessages;
};

} // namespace velotrine
