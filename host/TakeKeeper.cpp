#include "host/TakeKeeper.h"

#include "host/StateFolder.h"

#include <chrono>
#include <exception>
#include <utility>

namespace velotrine {

namespace {

constexpr int collectionsPerSecond = 10;

} // namespace

TakePlaces TakePlaces::ofUser()
{
    return {.music = juce::File::getSpecialLocation(juce::File::userMusicDirectory).getChildFile("Velotrine"),
            .state = stateFolder().getChildFile("takes")};
}

TakeKeeper::TakeKeeper(const TakePlaces& newPlaces, Writer newWriter)
    : places(newPlaces), writer(std::move(newWriter)), log(places.state.getFullPathName().toStdString()),
      leftBehind(log.leftBehind())
{
    tap.setRecording(true);
    startTimerHz(collectionsPerSecond);
}

TakeKeeper::~TakeKeeper()
{
    stopTimer();
    if (writing.valid())
        (void)outcome();
}

void TakeKeeper::collect()
{
    tap.records().takeAll([this](const TakeRecord& record) {
        assembler.add(record);
        log.add(record);
    });
    if (assembler.isRecording())
        log.add({.frame = tap.frames(), .bits = 0, .kind = TakeRecord::Kind::reached, .target = {}});
    log.flush();
    for (auto& take : assembler.finishedTakes())
        lastFinished = std::move(take);
}

std::optional<Take> TakeKeeper::lastTake() const
{
    auto take = assembler.takeSoFar(tap.frames());
    return take ? take : lastFinished;
}

void TakeKeeper::keepLastTake(const juce::String& name)
{
    if (writing.valid())
        return say("The take before is still being written.");
    collect();
    std::vector<Job> jobs;
    for (const auto& take : leftBehind)
        jobs.push_back({take, freeName("found " + juce::String(jobs.size() + 1))});
    if (auto take = lastTake())
        jobs.push_back({std::move(*take), freeName(name)});
    if (jobs.empty())
        return say("There is no take yet. It begins when you press play.");
    progress = 0.0;
    hasFailed = false;
    say("Keeping the take", true);
    writing = std::async(std::launch::async, [this, jobs = std::move(jobs)] { return write(jobs); });
}

juce::String TakeKeeper::write(const std::vector<Job>& jobs)
{
    try {
        for (const auto& job : jobs) {
            if (const auto made = job.file.getParentDirectory().createDirectory(); made.failed())
                throw std::runtime_error(made.getErrorMessage().toStdString());
            writer(job.take, job.file.getFullPathName().toStdString(),
                   [this](double fraction) { progress = fraction; });
        }
        return "Kept as " + jobs.back().file.getFullPathName() + ".wav, .mid and .velotrine-take";
    } catch (const std::exception& error) {
        hasFailed = true;
        return "The take is not kept: " + juce::String::fromUTF8(error.what());
    }
}

void TakeKeeper::timerCallback()
{
    collect();
    if (!writing.valid())
        return;
    if (writing.wait_for(std::chrono::seconds(0)) != std::future_status::ready)
        return say("Keeping the take: " + juce::String(juce::roundToInt(100.0 * progress)) + " %", true);
    say(outcome());
}

/// Waits for it, if it is not there.
juce::String TakeKeeper::outcome()
{
    const auto words = writing.get();
    if (!hasFailed) {
        log.forgetLeftBehind();
        leftBehind.clear();
    }
    return words;
}

juce::File TakeKeeper::freeName(const juce::String& name) const
{
    const auto now = juce::Time::getCurrentTime().formatted("%Y-%m-%d %H.%M.%S");
    const auto wanted = juce::File::createLegalFileName(now + " " + name);
    auto file = places.music.getChildFile(wanted);
    for (int number = 2; juce::File(file.getFullPathName() + ".wav").exists(); ++number)
        file = places.music.getChildFile(wanted + " " + juce::String(number));
    return file;
}

void TakeKeeper::say(const juce::String& text, bool goesOn) const
{
    if (onNotice)
        onNotice(text, goesOn);
}

} // namespace velotrine
