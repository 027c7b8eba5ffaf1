// What a session remembers of a plug-in, whatever the format: text of any kind.

#include "audiounit/Parameters.h"
#include "fuzz/Demand.h"
#include "fuzz/SilentHost.h"
#include "plugin/HostedInstrument.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace velotrine {
namespace {

void checkValues(const HostedInstrument& instrument)
{
    for (const auto& parameter : parameterTable()) {
        const auto value = instrument.value(parameter.address);
        demand(value >= parameter.minValue && value <= parameter.maxValue,
               "a state leaves every parameter within its range");
    }
    const auto size = instrument.editorSize();
    demand(size == size.bounded(), "the editor has a size that it can have");
}

void restore(std::string_view text)
{
    static SilentHost host;
    static HostedInstrument instrument(host);

    const auto before = instrument.saveState();
    if (const auto error = instrument.restoreState(text)) {
        demand(error->find('\n') == std::string::npos && error->size() > 20, "a refusal is a sentence");
        demand(instrument.saveState() == before, "a refused state changes nothing");
        return;
    }
    checkValues(instrument);
    const auto saved = instrument.saveState();
    demand(!instrument.restoreState(saved), "what is saved can be restored");
    demand(instrument.saveState() == saved, "what is restored is what was saved");
}

} // namespace
} // namespace velotrine

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    velotrine::restore({reinterpret_cast<const char*>(data), size});
    return 0;
}
