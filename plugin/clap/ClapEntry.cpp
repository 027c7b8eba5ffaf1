#include "audiounit/Identity.h"
#include "plugin/HostCall.h"
#include "plugin/clap/ClapPlugin.h"

#include <clap/entry.h>
#include <clap/plugin-factory.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace velotrine {

namespace {

/// As the format wants them: with a null behind the last.
constexpr auto features = [] {
    std::array<const char*, identity::clapFeatures.size() + 1> withEnd{};
    std::ranges::copy(identity::clapFeatures, withEnd.begin());
    return withEnd;
}();

const clap_plugin_descriptor_t descriptor{
    .clap_version = CLAP_VERSION,
    .id = identity::clapId,
    .name = identity::name,
    .vendor = identity::maker,
    .url = "",
    .manual_url = "",
    .support_url = "",
    .version = identity::version,
    .description = identity::description,
    .features = const_cast<const char**>(features.data()), // the format's structure is not const-correct
};

std::uint32_t CLAP_ABI pluginCount(const clap_plugin_factory_t*)
{
    return 1;
}

const clap_plugin_descriptor_t* CLAP_ABI pluginDescriptor(const clap_plugin_factory_t*, std::uint32_t index)
{
    return index == 0 ? &descriptor : nullptr;
}

const clap_plugin_t* CLAP_ABI createPlugin(const clap_plugin_factory_t*, const clap_host_t* host,
                                           const char* id)
{
    if (host == nullptr || id == nullptr || std::string_view(id) != descriptor.id ||
        !clap_version_is_compatible(host->clap_version))
        return nullptr;
    return answerOrNothing(
        [host] { return (new ClapPlugin(descriptor, *host))->clapStructure(); }); // the host destroys it
}

const clap_plugin_factory_t factory{.get_plugin_count = pluginCount,
                                    .get_plugin_descriptor = pluginDescriptor,
                                    .create_plugin = createPlugin};

bool CLAP_ABI initEntry(const char*)
{
    return true;
}

void CLAP_ABI deinitEntry() {}

const void* CLAP_ABI getFactory(const char* id)
{
    return id != nullptr && std::string_view(id) == CLAP_PLUGIN_FACTORY_ID ? &factory : nullptr;
}

} // namespace

} // namespace velotrine

extern "C" CLAP_EXPORT const clap_plugin_entry_t clap_entry = {.clap_version = CLAP_VERSION,
                                                               .init = velotrine::initEntry,
                                                               .deinit = velotrine::deinitEntry,
                                                               .get_factory = velotrine::getFactory};
