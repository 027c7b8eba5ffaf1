#include "tests/plugin/Vst3UnderTest.h"

#include "audiounit/Parameters.h"
#include "tests/plugin/Vst3HostObjects.h"

#include <tuple>

namespace velotrine {

Vst3UnderTest::Vst3UnderTest() : call(std::make_unique<vst3::Call>()) {}

Vst3UnderTest::~Vst3UnderTest() = default;

bool Vst3UnderTest::start(double sampleRate, int maxFrames)
{
    isRunning = host.start(sampleRate, maxFrames);
    return isRunning;
}

void Vst3UnderTest::stop()
{
    host.stop();
    isRunning = false;
}

void Vst3UnderTest::setTransport(const std::optional<HostTransport>& transport)
{
    call->setTransport(transport);
}

void Vst3UnderTest::setValue(ParameterAddress address, double value)
{
    const auto& range = parameterTable()[address];
    const auto normalised =
        (value - static_cast<double>(range.minValue)) / static_cast<double>(range.maxValue - range.minValue);
    const auto id = parameters.at(address).id;
    if (isRunning)
        call->add({.id = id, .value = normalised});
    else
        host.setValue(id, normalised);
}

bool Vst3UnderTest::render(float* left, float* right, int frames)
{
    call->setOutput(left, right, frames);
    return host.process(*call);
}

const std::vector<NoteMessage>& Vst3UnderTest::notes() const
{
    return call->notes();
}

void Vst3UnderTest::setRoomForNotes(int messages)
{
    call->setRoomForNotes(static_cast<std::size_t>(messages));
}

double Vst3UnderTest::value(ParameterAddress address) const
{
    const auto& range = parameterTable()[address];
    return static_cast<double>(range.minValue) +
           host.value(parameters.at(address).id) * static_cast<double>(range.maxValue - range.minValue);
}

std::string Vst3UnderTest::save() const
{
    return host.save();
}

bool Vst3UnderTest::load(const std::string& state)
{
    return host.load(state);
}

bool Vst3UnderTest::openEditor(XWindow parent, double scale)
{
    return host.open(parent, scale);
}

void Vst3UnderTest::closeEditor()
{
    host.close();
}

bool Vst3UnderTest::resizeEditor(int width, int height)
{
    return host.resize(width, height);
}

void Vst3UnderTest::runLoop(std::chrono::milliseconds duration)
{
    host.runLoop(duration);
}

const std::vector<std::string>& Vst3UnderTest::edits() const
{
    return host.told();
}

std::vector<HostMistake> Vst3UnderTest::forbiddenCalls()
{
    return {{"activates twice",
             [this] {
                 host.setActive(true);
                 host.setActive(true);
             }},
            {"deactivates twice",
             [this] {
                 host.setActive(false);
                 host.setActive(false);
             }},
            {"processes while it is not active",
             [this] {
                 host.setActive(false);
                 host.setProcessing(true);
             }},
            {"deactivates while it processes",
             [this] {
                 host.setProcessing(true);
                 host.setActive(false);
             }},
            {"stops processing twice",
             [this] {
                 host.setProcessing(false);
                 host.setProcessing(false);
             }},
            {"announces another rate and block while it is active", [this] {
                 host.setActive(true);
                 std::ignore = host.announce(96000.0, 64);
             }}};
}

} // namespace velotrine
