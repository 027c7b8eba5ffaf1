#pragma once

#include "tests/plugin/ClapHost.h"
#include "tests/plugin/PluginUnderTest.h"

namespace velotrine {

class ClapUnderTest final : public PluginUnderTest
{
public:
    static constexpr auto formatName = "Clap";

    ~ClapUnderTest() override;

    using PluginUnderTest::openEditor;

    bool start(double sampleRate, int maxFrames) override;
    void stop() override;
    void setTransport(const std::optional<HostTransport>& transport) override;
    void setValue(ParameterAddress address, double value) override;
    bool render(float* left, float* right, int frames) override;

    [[nodiscard]] const std::vector<NoteMessage>& notes() const override { return host.notes; }

    void setRoomForNotes(int messages) override { host.roomForNotes = static_cast<std::size_t>(messages); }

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
    ClapLibrary library;
    ClapHost host{library};
    ClapCall call{host};
    bool isRunning = false;
    bool isEditorOpen = false;
};

} // namespace velotrine
