#include "plugin/lv2/Lv2Names.h"
#include "tests/plugin/ClapHost.h"
#include "tests/plugin/Lv2Host.h"
#include "tests/plugin/Vst3Host.h"
#include "tests/support/AllocationFailure.h"
#include "tests/support/VirtualDisplay.h"

#include <array>
#include <cstdarg>
#include <functional>
#include <string>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

using Then = AllocationFailure::Then;

constexpr double sampleRate = 48000.0;

/// Does something that runs out of memory at its first allocation, then at its second, and so on, until there
/// was enough for all of it.
/// @param act    does it, and allocates only in the plug-in; false if the plug-in says that it failed
/// @param check  what holds after each time
void withoutMemory(const std::function<bool()>& act, const std::function<void()>& check)
{
    for (const auto then : {Then::succeed, Then::fail}) {
        bool isEnough = false;
        for (int before = 0; !isEnough; ++before) {
            SCOPED_TRACE("allocation " + std::to_string(before));
            bool isDone = false;
            {
                const AllocationFailure failure(before, then);
                isDone = act();
                isEnough = !failure.hasHappened();
            }
            if (isEnough) {
                EXPECT_TRUE(isDone);
            }
            check();
            if (testing::Test::HasFailure())
                return;
        }
    }
}

class OutOfMemory : public testing::Test
{
protected:
    const VirtualDisplay& display = VirtualDisplay::shared();
};

TEST_F(OutOfMemory, AClapPluginThatCannotBeMadeIsNull)
{
    const ClapLibrary library;
    const auto& factory = library.factory();
    clap_host_t host{};
    host.clap_version = CLAP_VERSION;
    host.get_extension = [](const clap_host_t*, const char*) -> const void* { return nullptr; };
    const auto make = [&] {
        const auto* const made = factory.create_plugin(&factory, &host, "example.marrowbeck.velotrine");
        if (made != nullptr)
            made->destroy(made);
        return made != nullptr;
    };
    withoutMemory(make, [] {});
}

TEST_F(OutOfMemory, AClapPluginThatCannotStartSaysSoAndStartsLater)
{
    const ClapLibrary library;
    ClapHost host(library);
    const auto before = host.save();
    const auto& plugin = host.plugin();
    withoutMemory([&] { return plugin.activate(&plugin, sampleRate, 1, 512); },
                  [&] {
                      EXPECT_EQ(host.save(), before);
                      plugin.deactivate(&plugin);
                      ASSERT_TRUE(host.start(sampleRate, 512));
                      Sound sound(512);
                      EXPECT_EQ(host.process(sound.left.data(), sound.right.data(), 512, {}),
                                CLAP_PROCESS_CONTINUE);
                      host.stop();
                  });
}

TEST_F(OutOfMemory, AClapPluginSavesAllOfItsStateOrSaysThatItCannot)
{
    const ClapLibrary library;
    ClapHost host(library);
    const auto& state = host.extension<clap_plugin_state_t>(CLAP_EXT_STATE);
    const auto before = host.save();
    std::string saved;
    saved.reserve(before.size());
    const clap_ostream_t stream{
        .ctx = &saved, .write = [](const clap_ostream_t* to, const void* bytes, std::uint64_t size) {
            static_cast<std::string*>(to->ctx)->append(static_cast<const char*>(bytes), size);
            return static_cast<std::int64_t>(size);
        }};
    withoutMemory(
        [&] {
            saved.clear();
            return state.save(&host.plugin(), &stream);
        },
        [&] { EXPECT_TRUE(saved.empty() || saved == before); });
}

TEST_F(OutOfMemory, AClapPluginAnswersOrSaysThatItCannot)
{
    const ClapLibrary library;
    ClapHost host(library);
    withoutMemory(
        [&] {
            char text[64];
            double value = 0.0;
            clap_param_info_t info;
            return host.params().value_to_text(&host.plugin(), 4, 6.0, text, sizeof text) &&
                   host.params().text_to_value(&host.plugin(), 4, "F#", &value) &&
                   host.params().get_info(&host.plugin(), 4, &info);
        },
        [] {});
}

/// A host that allocates nothing itself.
class FrugalLv2Host
{
public:
    explicit FrugalLv2Host(const Lv2Library& library) : descriptor(*library.plugin(0)) {}

    ~FrugalLv2Host() { destroy(); }

    FrugalLv2Host(const FrugalLv2Host&) = delete;
    FrugalLv2Host& operator=(const FrugalLv2Host&) = delete;

    bool make(double rate)
    {
        plugin = descriptor.instantiate(&descriptor, rate, "/nowhere/", features.data());
        return plugin != nullptr;
    }

    void destroy()
    {
        if (plugin != nullptr)
            descriptor.cleanup(plugin);
        plugin = nullptr;
    }

    void start() { descriptor.activate(plugin); }

    void stop() { descriptor.deactivate(plugin); }

    void run()
    {
        Sound sound(512);
        descriptor.connect_port(plugin, lv2Port::left, sound.left.data());
        descriptor.connect_port(plugin, lv2Port::right, sound.right.data());
        descriptor.run(plugin, 512);
    }

    bool save(std::string& text) const
    {
        const auto store = [](LV2_State_Handle handle, std::uint32_t, const void* bytes, std::size_t size,
                              std::uint32_t, std::uint32_t) {
            static_cast<std::string*>(handle)->assign(static_cast<const char*>(bytes), size);
            return LV2_STATE_SUCCESS;
        };
        return state().save(plugin, store, &text, LV2_STATE_IS_POD, nullptr) == LV2_STATE_SUCCESS;
    }

private:
    static constexpr LV2_URID theOnlyId = 1;

    static int say(LV2_Log_Handle, LV2_URID, const char*, ...) { return 0; }

    static int saySome(LV2_Log_Handle, LV2_URID, const char*, va_list) { return 0; }

    [[nodiscard]] const LV2_State_Interface& state() const
    {
        return *static_cast<const LV2_State_Interface*>(descriptor.extension_data(LV2_STATE__interface));
    }

    const LV2_Descriptor& descriptor;
    LV2_Handle plugin = nullptr;
    LV2_URID_Map map{nullptr, [](LV2_URID_Map_Handle, const char*) { return theOnlyId; }};
    LV2_Log_Log log{nullptr, say, saySome};
    const LV2_Feature mapFeature{LV2_URID__map, &map};
    const LV2_Feature logFeature{LV2_LOG__log, &log};
    const std::array<const LV2_Feature*, 3> features{&mapFeature, &logFeature, nullptr};
};

TEST_F(OutOfMemory, AnLv2PluginThatCannotBeMadeIsNull)
{
    const Lv2Library library;
    FrugalLv2Host host(library);
    withoutMemory([&] { return host.make(sampleRate); }, [&] { host.destroy(); });
    withoutMemory([&] { return !host.make(0.0); }, [] {});
}

TEST_F(OutOfMemory, AnLv2PluginThatCannotStartStartsLater)
{
    const Lv2Library library;
    FrugalLv2Host host(library);
    ASSERT_TRUE(host.make(sampleRate));
    withoutMemory(
        [&] {
            host.start();
            return true;
        },
        [&] {
            host.run();
            host.stop();
        });
}

TEST_F(OutOfMemory, AnLv2PluginSavesAllOfItsStateOrSaysThatItCannot)
{
    const Lv2Library library;
    FrugalLv2Host host(library);
    ASSERT_TRUE(host.make(sampleRate));
    std::string before;
    ASSERT_TRUE(host.save(before));
    std::string saved = before;
    withoutMemory(
        [&] {
            saved.clear();
            return host.save(saved);
        },
        [&] { EXPECT_TRUE(saved.empty() || saved == before); });
}

TEST_F(OutOfMemory, AClapEditorThatCannotBeMadeSaysSoAndOpensLater)
{
    const ClapLibrary library;
    ClapHost host(library);
    const auto& gui = host.extension<clap_plugin_gui_t>(CLAP_EXT_GUI);
    {
        const AllocationFailure failure(0, Then::succeed);
        EXPECT_FALSE(gui.create(&host.plugin(), CLAP_WINDOW_API_X11, false));
    }
    EXPECT_TRUE(host.timers.empty() && host.descriptors.empty());
    EXPECT_TRUE(gui.create(&host.plugin(), CLAP_WINDOW_API_X11, false));
    gui.destroy(&host.plugin());
}

TEST_F(OutOfMemory, AVst3PluginThatCannotStartSaysSoAndStartsLater)
{
    Vst3Host host;
    const auto before = host.save();
    withoutMemory([&] { return host.start(sampleRate, 512); },
                  [&] {
                      host.stop();
                      EXPECT_EQ(host.save(), before);
                      ASSERT_TRUE(host.start(sampleRate, 512));
                      Sound sound(512);
                      EXPECT_TRUE(host.process(sound.left.data(), sound.right.data(), 512, {}));
                      host.stop();
                  });
}

TEST_F(OutOfMemory, AVst3PluginSavesAllOfItsStateOrSaysThatItCannot)
{
    const Vst3Host host;
    const auto before = host.save();
    std::string saved;
    withoutMemory(
        [&] {
            saved = host.save();
            return !saved.empty();
        },
        [&] { EXPECT_TRUE(saved.empty() || saved == before); });
}

} // namespace
} // namespace velotrine
