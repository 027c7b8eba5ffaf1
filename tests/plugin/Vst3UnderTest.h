#pragma once

#include "tests/plugin/PluginUnderTest.h"
#include "tests/plugin/Vst3Host.h"

#include <memory>

namespace velotrine {

namespace vst3 {

class Call;

}

class Vst3UnderTest final : public PluginUnderTest
{
public:
    static constexpr auto formatName = "Vst3";

    Vst3UnderTest();
    ~Vst3UnderTest() override;

    using PluginUnderTest::openEditor;

    bool start(double sampleRate, int maxFrames) override;
    void stop() override;
    void setTransport(const std::optional<HostTransport>& transport) override;
    void setValue(ParameterAddress address, double value) override;
    bool render(float* left, float* right, int frames) override;
    [[nodiscard]] const std::vector<NoteMessage>& notes() const override;
    void setRoomForNotes(int messages) override;
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
    // The wrapper looks for a display as it is loaded, and keeps to it.
    const VirtualDisplay& display = VirtualDisplay::shared();
    Vst3Host host;
    const std::vector<Vst3Parameter> parameters = host.parameters();
    std::unique_ptr<vst3::Call> call;
    bool isRunning = false;
};

} // namespace velotrine
