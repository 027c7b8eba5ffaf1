#include "audiounit/Parameters.h"
#include "audiounit/StateText.h"
#include "audiounit/VelotrineAudioUnit.h"
#include "audiounit/VelotrineComponent.h"
#include "fuzz/Demand.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace velotrine {
namespace {

VelotrineAudioUnit& unit()
{
    static VelotrineAudioUnit instance(velotrineComponentDescription(),
                                       AudioComponentInstantiationOptions::loadInProcess);
    return instance;
}

void checkRoundTrip(const AUFullState& state)
{
    const auto text = textFromState(state);
    const auto again = stateFromText(text);
    demand(again.state.has_value(), "what is written can be read");
    demand(*again.state == state, "what is read is what was written");
    demand(textFromState(*again.state) == text, "the same state is the same text");
}

void checkUnit(const AUFullState& state)
{
    unit().setFullState(state);
    const auto tree = unit().parameterTree();
    for (const auto& parameter : parameterTable()) {
        const auto value = tree->parameterWithAddress(parameter.address)->value();
        demand(value >= parameter.minValue && value <= parameter.maxValue,
               "a state leaves every parameter within its range");
    }

    const auto taken = unit().fullState();
    const auto again = stateFromText(textFromState(taken));
    demand(again.state.has_value(), "what a unit is can be written and read");
    unit().setFullState(*again.state);
    demand(unit().fullState() == taken, "a unit that reads what it was is as it was");
}

void checkState(std::string_view text)
{
    const auto read = stateFromText(text);
    demand(read.state.has_value() == read.error.empty(), "there is a state, or a sentence that says why not");
    if (!read.state)
        return;
    for (const auto& [identifier, value] : read.state->parameters)
        demand(std::isfinite(value), "every value that is read is finite");
    checkRoundTrip(*read.state);
    checkUnit(*read.state);
}

} // namespace
} // namespace velotrine

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    velotrine::checkState({reinterpret_cast<const char*>(data), size});
    return 0;
}
