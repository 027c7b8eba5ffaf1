#include "tests/plugin/Lv2UnderTest.h"

#include "audiounit/Parameters.h"
#include "plugin/lv2/Lv2Names.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace velotrine {

namespace {

constexpr double initialRate = 48000.0;

} // namespace

Lv2UnderTest::Lv2UnderTest()
{
    heard.reserve(Lv2Notes::mostMessages);
    makeInstance(initialRate);
}

void Lv2UnderTest::makeInstance(double sampleRate)
{
    const auto state = host && host->hasPlugin() ? host->save() : std::string();
    const auto controls = host ? std::optional(host->controls) : std::nullopt;
    host = std::make_unique<Lv2Host>(library, sampleRate);
    host->runsPluginWhileIdle = false;
    notePort.emplace(*host);
    rate = sampleRate;
    nothing = host->sequenceOf({});
    connected = {{lv2Port::left, nullptr},
                 {lv2Port::right, nullptr},
                 {lv2Port::time, nullptr},
                 {lv2Port::notes, nullptr}};
    hasNews = false;
    saidLast.reset();
    if (controls)
        host->controls = *controls;
    if (!state.empty() && host->hasPlugin())
        host->restore(state);
}

bool Lv2UnderTest::start(double sampleRate, int)
{
    if (sampleRate != rate || !host->hasPlugin())
        makeInstance(sampleRate);
    if (!host->hasPlugin())
        return false;
    host->stop();
    host->start();
    return true;
}

void Lv2UnderTest::stop()
{
    host->stop();
}

void Lv2UnderTest::setTransport(const std::optional<HostTransport>& transport)
{
    if (!transport || transport == saidLast)
        return;
    news = host->sequenceOf({positionOf(0, *transport)});
    saidLast = transport;
    hasNews = true;
}

void Lv2UnderTest::setValue(ParameterAddress address, double value)
{
    host->controls.at(address) = static_cast<float>(value);
}

bool Lv2UnderTest::render(float* left, float* right, int frames)
{
    if (!host->hasPlugin()) {
        for (auto* const channel : {left, right})
            if (channel != nullptr)
                std::fill_n(channel, frames, 0.0f);
        return false;
    }
    connect(lv2Port::left, left);
    connect(lv2Port::right, right);
    connect(lv2Port::time, hasNews ? news.data() : nothing.data());
    connect(lv2Port::notes, notePort->emptied(roomForNotes));
    hasNews = false;
    host->run(static_cast<std::uint32_t>(frames));
    notePort->readInto(heard);
    return true;
}

void Lv2UnderTest::connect(std::uint32_t port, void* data)
{
    auto& place = connected.at(port);
    if (place == data)
        return;
    place = data;
    host->connect(port, data);
}

double Lv2UnderTest::value(ParameterAddress address) const
{
    const auto state = save();
    const auto key = "\"" + parameterTable()[address].identifier + "\": ";
    const auto at = state.find(key);
    if (at == std::string::npos)
        throw std::runtime_error("the state has no " + key);
    return std::stod(state.substr(at + key.size()));
}

std::string Lv2UnderTest::save() const
{
    return host->save();
}

bool Lv2UnderTest::load(const std::string& state)
{
    return host->restore(state) == LV2_STATE_SUCCESS;
}

bool Lv2UnderTest::openEditor(XWindow parent, double scale)
{
    return host->openUi(parent, static_cast<float>(scale));
}

void Lv2UnderTest::closeEditor()
{
    host->closeUi();
}

bool Lv2UnderTest::resizeEditor(int width, int height)
{
    return host->resizeUi(width, height);
}

void Lv2UnderTest::runLoop(std::chrono::milliseconds duration)
{
    host->idle(duration);
}

const std::vector<std::string>& Lv2UnderTest::edits() const
{
    return host->told;
}

std::vector<HostMistake> Lv2UnderTest::forbiddenCalls()
{
    return {{"activates twice",
             [this] {
                 host->start();
                 host->start();
             }},
            {"deactivates twice",
             [this] {
                 host->deactivate();
                 host->deactivate();
             }},
            {"connects ports that the plug-in does not have",
             [this] {
                 std::array<float, 16> nowhere{};
                 for (const std::uint32_t port : {1000U, 0x7fffffffU, 0xffffffffU})
                     host->connect(port, nowhere.data());
             }},
            {"runs with no port connected", [this] {
                 for (std::uint32_t port = 0; port < parameterCount; ++port)
                     host->connect(port, nullptr);
                 for (const auto& [port, place] : connected)
                     host->connect(port, nullptr);
                 host->run(64);
                 for (std::uint32_t port = 0; port < parameterCount; ++port)
                     host->connect(port, &host->controls[port]);
                 for (const auto& [port, place] : connected)
                     host->connect(port, place);
             }}};
}

} // namespace velotrine
