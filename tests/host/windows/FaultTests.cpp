// The world around the application fails: disks, folders, sound servers, and the application itself.

#include "tests/host/JackListener.h"
#include "tests/host/windows/ApplicationTest.h"
#include "tests/host/windows/KeptTakes.h"
#include "tests/support/JackServer.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <system_error>
#include <thread>

#include <gmock/gmock.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

namespace velotrine {
namespace {

namespace fs = std::filesystem;
using testing::IsEmpty;
using testing::SizeIs;

/// Puts a file system of the calling process's own on a folder. Ends the process if that is not allowed.
void mountForThisProcess(const fs::path& place, unsigned long flags, const char* options)
{
    const bool isMounted = unshare(geteuid() == 0 ? CLONE_NEWNS : CLONE_NEWUSER | CLONE_NEWNS) == 0 &&
                           mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                           mount("tmpfs", place.c_str(), "tmpfs", flags, options) == 0;
    if (!isMounted)
        _exit(77);
}

class Faults : public ApplicationTest
{
protected:
    void SetUp() override
    {
        environment = {{"HOME", folder.path().string()},
                       {"XDG_STATE_HOME", (folder.path() / "state").string()}};
        haveSeenHelp();
    }

    /// Starts the application behind a file system of its own.
    void launchBehindMount(const fs::path& place, unsigned long flags, const char* options)
    {
        fs::create_directories(place);
        auto surroundings = ofApplication();
        surroundings.beforeStart = [=] { mountForThisProcess(place, flags, options); };
        application.emplace(std::vector<std::string>{VELOTRINE_HOST_PROGRAM}, surroundings);
        ASSERT_TRUE(windowAppears("Velotrine"));
    }

    [[nodiscard]] ProcessSurroundings ofApplication() const
    {
        ProcessSurroundings surroundings;
        surroundings.environment = {{"XDG_CONFIG_HOME", folder.path().string()}};
        surroundings.environment.insert(surroundings.environment.end(), environment.begin(),
                                        environment.end());
        return surroundings;
    }

    void waitForKeyboard()
    {
        ASSERT_TRUE(windowHasKeyboard("Velotrine"));
        runMessagesFor(0.5);
    }

    /// The user's folder as the application sees it.
    [[nodiscard]] fs::path homeOfApplication() const
    {
        return fs::path("/proc/" + std::to_string(application->id()) + "/root" + folder.path().string());
    }

    void launchAndWait()
    {
        launch();
        waitForKeyboard();
    }

    void play(double seconds)
    {
        pressKey("space");
        runMessagesFor(seconds);
        pressKey("space");
        runMessagesFor(0.5);
    }

    [[nodiscard]] bool comesToKeep(const fs::path& home)
    {
        return runMessagesUntil([&] { return !keptTakes(home, ".mid").empty(); }, 30.0);
    }

    void quit()
    {
        pressKey("ctrl+q");
        EXPECT_EQ(end().exitCode, 0);
    }
};

TEST_F(Faults, AFullDiskHoldsTheTakeButNoHalfSoundAndAllOfItOnceThereIsRoom)
{
    launchBehindMount(folder.path() / "Music", 0, "size=4m");
    waitForKeyboard();
    const auto music = homeOfApplication() / "Music";
    const auto ballast = music / "ballast";
    {
        std::ofstream file(ballast, std::ios::binary);
        file << std::string((4U << 20U) - 65536U, 'x');
    }
    play(3.0);
    pressKey("ctrl+k");
    // The take itself is small and comes first: its sound can be made later.
    ASSERT_TRUE(
        runMessagesUntil([&] { return !keptTakes(homeOfApplication(), ".velotrine-take").empty(); }, 10.0));
    runMessagesFor(3.0);
    const auto files = std::distance(fs::directory_iterator(music / "Velotrine"), fs::directory_iterator());
    EXPECT_EQ(files, 1);
    EXPECT_THAT(keptTakes(homeOfApplication(), ".velotrine-take"), SizeIs(1));

    fs::remove(ballast);
    pressKey("ctrl+k");
    ASSERT_TRUE(comesToKeep(homeOfApplication()));
    int rate = 0;
    EXPECT_GT(leftOf(keptTakes(homeOfApplication(), ".wav").at(0), &rate).size(), 44100U);
    quit();
}

TEST_F(Faults, WhereNothingCanBeWrittenStopNeitherSoundNorWindow)
{
    const JackServer server;
    // All that the application writes on its own: preferences, settings, the take's log, kept takes.
    const auto sealed = (folder.path() / "sealed").string();
    environment = {{"HOME", sealed}, {"XDG_STATE_HOME", sealed}, {"XDG_CONFIG_HOME", sealed}};
    launchBehindMount(sealed, MS_RDONLY, nullptr);
    // No preferences tell that the help has been seen.
    ASSERT_TRUE(windowHasKeyboard("Velotrine Help"));
    pressKey("ctrl+w");
    waitForKeyboard();
    pressKey("space");
    EXPECT_GT(peakOnJack(1.0), 0.1f);
    pressKey("ctrl+k");
    runMessagesFor(1.0);
    EXPECT_GT(peakOnJack(1.0), 0.1f);
    quit();
}

TEST_F(Faults, ASoundServerThatDiesAndComesBackAtAnotherRateIsPlayedOn)
{
    std::optional<JackServer> server(std::in_place);
    launchAndWait();
    pressKey("space");
    EXPECT_GT(peakOnJack(1.0), 0.1f);
    server->kill();
    runMessagesFor(2.0);
    server.reset();
    server.emplace(std::vector<std::string>{}, 44100);
    EXPECT_TRUE(runMessagesUntil([] { return peakOnJack(0.5) > 0.1f; }, 20.0));
    quit();
}

TEST_F(Faults, ASecondApplicationLeavesTheFirstOnesTakeAlone)
{
    launchAndWait();
    pressKey("space");
    runMessagesFor(2.0);
    ChildProcess second({VELOTRINE_HOST_PROGRAM}, ofApplication());
    ASSERT_TRUE(runMessagesUntil([] { return windowsTitled("Velotrine").size() == 2; }, 10.0));
    runMessagesFor(1.0);
    pressKey("ctrl+k");
    runMessagesFor(1.0);
    EXPECT_THAT(keptTakes(folder.path(), ".wav"), IsEmpty()) << "it has played nothing itself";
    pressKey("ctrl+q");
    ASSERT_TRUE(runMessagesUntil([&] { return second.hasEnded(); }, 10.0));
    EXPECT_EQ(second.finish().exitCode, 0);

    ASSERT_TRUE(windowHasKeyboard("Velotrine"));
    pressKey("ctrl+k");
    EXPECT_TRUE(comesToKeep(folder.path()));
    quit();
}

TEST_F(Faults, AKillWhileATakeIsWrittenLeavesNoHalfFileAndTheTakeIsStillThere)
{
    launchAndWait();
    play(5.0);
    pressKey("ctrl+k");
    // As soon as its folder is there, the take is being written.
    const auto start = std::chrono::steady_clock::now();
    while (!fs::exists(folder.path() / "Music/Velotrine") &&
           std::chrono::steady_clock::now() - start < std::chrono::seconds(10))
        std::this_thread::sleep_for(std::chrono::microseconds(100));
    application->send(SIGKILL);
    ASSERT_TRUE(ends());
    ASSERT_TRUE(fs::exists(folder.path() / "Music/Velotrine"));
    int rate = 0;
    for (const auto& file : keptTakes(folder.path(), ".wav"))
        EXPECT_GT(leftOf(file, &rate).size(), 44100U) << file;
    const auto before = keptTakes(folder.path(), ".mid").size();

    launchAndWait();
    pressKey("ctrl+k");
    ASSERT_TRUE(runMessagesUntil([&] { return keptTakes(folder.path(), ".mid").size() > before; }, 30.0));
    quit();
}

} // namespace
} // namespace velotrine
