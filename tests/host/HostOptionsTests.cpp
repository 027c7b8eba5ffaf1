#include "host/HostOptions.h"

#include <array>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velotrine {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

std::variant<HostOptions, ProgramEnd> parsed(std::vector<const char*> arguments)
{
    arguments.insert(arguments.begin(), "a/path/VelotrineHostMac");
    return parseHostOptions(arguments);
}

HostOptions options(const std::vector<const char*>& arguments)
{
    return std::get<HostOptions>(parsed(arguments));
}

ProgramEnd end(const std::vector<const char*>& arguments)
{
    return std::get<ProgramEnd>(parsed(arguments));
}

void expectComplaint(const std::vector<const char*>& arguments, const std::string& beginning)
{
    const auto answer = end(arguments);
    EXPECT_EQ(answer.exitCode, 2);
    EXPECT_EQ(answer.out, "");
    EXPECT_THAT(answer.err, StartsWith("VelotrineHostMac: " + beginning));
    EXPECT_EQ(answer.err.find('\n'), answer.err.size() - 1) << answer.err;
}

TEST(HostOptions, NoOptionLeavesEverythingToTheDevice)
{
    const auto none = options({});
    EXPECT_FALSE(none.listDevices);
    EXPECT_FALSE(none.manual);
    EXPECT_FALSE(none.device.deviceName);
    EXPECT_FALSE(none.device.sampleRate);
    EXPECT_FALSE(none.device.bufferFrames);
    EXPECT_FALSE(none.scale);
    EXPECT_EQ(none.session, "");
    EXPECT_EQ(none.file, "");
}

TEST(HostOptions, ReadsWhatIsTyped)
{
    const auto all =
        options({"--device", "Built-in Audio", "--sample-rate=96000", "--buffer", "64", "--scale", "1.5",
                 "--list-devices", "--manual", "--session", "s.json", "a.json"});
    EXPECT_TRUE(all.listDevices);
    EXPECT_TRUE(all.manual);
    EXPECT_EQ(all.device.deviceName, "Built-in Audio");
    EXPECT_EQ(all.device.sampleRate, 96000.0);
    EXPECT_EQ(all.device.bufferFrames, 64);
    EXPECT_EQ(all.scale, 1.5);
    EXPECT_EQ(all.session, "s.json");
    EXPECT_EQ(all.file, "a.json");
}

constexpr std::array optionNames{"--list-devices", "--manual",  "--device", "--sample-rate", "--buffer",
                                 "--scale",        "--session", "--help",   "--version"};

TEST(HostOptions, HelpNamesEveryOption)
{
    const auto help = end({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_EQ(help.err, "");
    for (const auto* const name : optionNames)
        EXPECT_THAT(help.out, HasSubstr(name));
}

TEST(HostOptions, TheManualExplainsEveryOption)
{
    std::ifstream file(VELOTRINE_SOURCE_DIR "/docs/manual.md");
    const std::string manual(std::istreambuf_iterator<char>(file), {});
    for (const auto* const name : optionNames) {
        std::string asCode(name);
        asCode.insert(asCode.begin(), '`');
        asCode.push_back('`');
        EXPECT_THAT(manual, HasSubstr(asCode));
    }
}

TEST(HostOptions, VersionIsTheProjects)
{
    const auto version = end({"--version"});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_EQ(version.out, "Velotrine " VELOTRINE_VERSION "\n");
}

TEST(HostOptions, WhatIsWrongIsNamedOnOneLine)
{
    expectComplaint(
        {"--devise", "x"},
        "--devise: is not known here; did you mean \"--device\"? (\"VelotrineHostMac --help\" shows");
    expectComplaint({"one.json", "take.wav"}, "take.wav: is not known here (");
    expectComplaint({""}, "\"\": is not known here (");
    expectComplaint({"--session"}, "--session: needs a value behind it (");
    expectComplaint({"--session", ""}, "--session: needs a value behind it (");
    expectComplaint({"--device"}, "--device: needs a value behind it (");
    expectComplaint({"--device", ""}, "--device: needs a value behind it (");
    expectComplaint({"--device", "--buffer", "64"}, "--device: needs a value behind it (");
    expectComplaint({"--device=a", "--device=b"}, "--device: can be given only once (");
    expectComplaint({"--list-devices=yes"}, "--list-devices: takes no value (");
    for (const auto* const rate : {"nan", "inf", "7999", "768001", "44100.5", "fast", "-48000", "1e999"})
        expectComplaint({"--sample-rate", rate},
                        "--sample-rate: \"" + std::string(rate) +
                            "\" will not do; give a whole number of Hz from 8000 to 768000");
    for (const auto* const frames : {"0", "8193", "-64", "nan", "64 frames", "0.5"})
        expectComplaint({"--buffer", frames},
                        "--buffer: \"" + std::string(frames) +
                            "\" will not do; give a whole number of frames from 1 to 8192");
    for (const auto* const scale : {"0.4", "8.1", "0", "-1", "nan", "inf", "200%", "large"})
        expectComplaint({"--scale", scale},
                        "--scale: \"" + std::string(scale) + "\" will not do; give a number from 0.5 to 8");
    expectComplaint({"--buffer", "4\n\x1b[2J"}, "--buffer: \"4??[2J\" will not do");
}

const std::vector<OutputDevice> devices{{"JACK", "system"}, {"ALSA", "Default ALSA Output"}};

TEST(HostOptions, TheListingHasALineForEachDevice)
{
    const auto listing = deviceListing({}, devices);
    EXPECT_EQ(listing.exitCode, 0);
    EXPECT_EQ(listing.out, "JACK  system\nALSA  Default ALSA Output\n");
    EXPECT_EQ(listing.err, "");
}

TEST(HostOptions, TheListingSaysWhenThereIsNoDevice)
{
    const auto listing = deviceListing(options({}), {});
    EXPECT_EQ(listing.exitCode, 0);
    EXPECT_EQ(listing.out, "");
    EXPECT_EQ(listing.err, "VelotrineHostMac: there is no audio device\n");
}

TEST(HostOptions, ADeviceThatIsThereIsNotRefused)
{
    EXPECT_FALSE(refuseUnknownDevice(options({}), devices));
    EXPECT_FALSE(refuseUnknownDevice(options({}), {}));
    EXPECT_FALSE(refuseUnknownDevice(options({"--device", "system"}), devices));
}

TEST(HostOptions, AnUnknownDeviceIsRefusedWithTheNearestName)
{
    const auto refusal = refuseUnknownDevice(options({"--device", "sistem"}), devices);
    ASSERT_TRUE(refusal);
    EXPECT_EQ(refusal->exitCode, 2);
    EXPECT_EQ(refusal->err, "VelotrineHostMac: --device: there is no audio device \"sistem\"; did you mean "
                            "\"system\"? (\"VelotrineHostMac --list-devices\" shows all)\n");
}

} // namespace
} // namespace velotrine
