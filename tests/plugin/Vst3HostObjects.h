#pragma once

#include "audiounit/NoteOutput.h"
#include "tests/plugin/Vst3Host.h"

#include <pluginterfaces/base/ibstream.h>
#include <pluginterfaces/gui/iplugview.h>
#include <pluginterfaces/vst/ivstaudioprocessor.h>
#include <pluginterfaces/vst/ivsteditcontroller.h>
#include <pluginterfaces/vst/ivstevents.h>
#include <pluginterfaces/vst/ivsthostapplication.h>
#include <pluginterfaces/vst/ivstparameterchanges.h>
#include <pluginterfaces/vst/ivstprocesscontext.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

// The objects that a VST3 host lends a plug-in.
namespace velotrine::vst3 {

using namespace Steinberg;

/// The host's objects live as long as the host: there is no counting.
#define VELOTRINE_UNCOUNTED                                                                                  \
    uint32 PLUGIN_API addRef() override                                                                      \
    {                                                                                                        \
        return 1;                                                                                            \
    }                                                                                                        \
    uint32 PLUGIN_API release() override                                                                     \
    {                                                                                                        \
        return 1;                                                                                            \
    }

template <typename Interface>
tresult answer(Interface& object, const TUID interfaceId, const TUID asked, void** result)
{
    if (std::memcmp(asked, interfaceId, sizeof(TUID)) != 0 &&
        std::memcmp(asked, FUnknown_iid, sizeof(TUID)) != 0) {
        *result = nullptr;
        return kNoInterface;
    }
    *result = &object;
    return kResultOk;
}

class HostApplication final : public Vst::IHostApplication
{
public:
    VELOTRINE_UNCOUNTED

    tresult PLUGIN_API queryInterface(const TUID id, void** object) override
    {
        return answer<Vst::IHostApplication>(*this, Vst::IHostApplication_iid, id, object);
    }

    tresult PLUGIN_API getName(Vst::String128 name) override
    {
        std::copy_n(u"Test", 5, name);
        return kResultOk;
    }

    tresult PLUGIN_API createInstance(TUID, TUID, void** object) override
    {
        *object = nullptr;
        return kResultFalse;
    }
};

class ValueQueue final : public Vst::IParamValueQueue
{
public:
    explicit ValueQueue(Vst3Automation change) : automation(change) {}

    VELOTRINE_UNCOUNTED

    tresult PLUGIN_API queryInterface(const TUID id, void** object) override
    {
        return answer<Vst::IParamValueQueue>(*this, Vst::IParamValueQueue_iid, id, object);
    }

    Vst::ParamID PLUGIN_API getParameterId() override { return automation.id; }

    int32 PLUGIN_API getPointCount() override { return 1; }

    tresult PLUGIN_API getPoint(int32, int32& offset, Vst::ParamValue& value) override
    {
        offset = 0;
        value = automation.value;
        return kResultTrue;
    }

    tresult PLUGIN_API addPoint(int32, Vst::ParamValue value, int32& index) override
    {
        index = 0;
        automation.value = value;
        return kResultTrue;
    }

private:
    Vst3Automation automation;
};

class ValueChanges final : public Vst::IParameterChanges
{
public:
    VELOTRINE_UNCOUNTED

    tresult PLUGIN_API queryInterface(const TUID id, void** object) override
    {
        return answer<Vst::IParameterChanges>(*this, Vst::IParameterChanges_iid, id, object);
    }

    int32 PLUGIN_API getParameterCount() override { return static_cast<int32>(queues.size()); }

    Vst::IParamValueQueue* PLUGIN_API getParameterData(int32 index) override
    {
        return &queues[static_cast<std::size_t>(index)];
    }

    Vst::IParamValueQueue* PLUGIN_API addParameterData(const Vst::ParamID&, int32&) override
    {
        return nullptr;
    }

    std::vector<ValueQueue> queues;
};

/// What a plug-in sends in a block; of notes only.
class EventList final : public Vst::IEventList
{
public:
    static constexpr std::size_t mostMessages = 4096;

    VELOTRINE_UNCOUNTED

    EventList() { notes.reserve(mostMessages); }

    tresult PLUGIN_API queryInterface(const TUID id, void** object) override
    {
        return answer<Vst::IEventList>(*this, Vst::IEventList_iid, id, object);
    }

    int32 PLUGIN_API getEventCount() override { return 0; }

    tresult PLUGIN_API getEvent(int32, Vst::Event&) override { return kResultFalse; }

    tresult PLUGIN_API addEvent(Vst::Event& event) override
    {
        if (notes.size() >= room || event.busIndex != 0)
            return kResultFalse;
        if (event.type == Vst::Event::kNoteOnEvent)
            add(event.sampleOffset, true, event.noteOn.channel, event.noteOn.pitch, event.noteOn.velocity);
        else if (event.type == Vst::Event::kNoteOffEvent)
            add(event.sampleOffset, false, event.noteOff.channel, event.noteOff.pitch,
                event.noteOff.velocity);
        return kResultOk;
    }

    std::vector<NoteMessage> notes;
    std::size_t room = mostMessages;

private:
    void add(int32 frame, bool isOn, int16 channel, int16 pitch, float velocity)
    {
        notes.push_back({.frame = frame,
                         .isOn = isOn,
                         .channel = static_cast<std::uint8_t>(channel),
                         .key = static_cast<std::uint8_t>(pitch),
                         .velocity = static_cast<std::uint8_t>(std::lround(velocity * 127.0f))});
    }
};

/// A call of process(), prepared before it is made: the host allocates nothing in it.
class Call
{
public:
    Call()
    {
        processData.processMode = Vst::kRealtime;
        processData.inputParameterChanges = &changes;
        processData.outputParameterChanges = &answers;
        processData.outputEvents = &events;
        setOutput({.channels = {nullptr, nullptr}});
    }

    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    void setTransport(const std::optional<HostTransport>& transport)
    {
        context = {};
        context.state = Vst::ProcessContext::kTempoValid | Vst::ProcessContext::kTimeSigValid;
        if (transport && transport->isPlaying)
            context.state |= Vst::ProcessContext::kPlaying;
        const auto said = transport.value_or(HostTransport{});
        context.tempo = said.tempo;
        context.timeSigNumerator = static_cast<int32>(said.beatsPerBar);
        context.timeSigDenominator = static_cast<int32>(said.beatUnit);
        processData.processContext = transport ? &context : nullptr;
    }

    /// For the next block.
    void add(const Vst3Automation& automation) { changes.queues.emplace_back(automation); }

    /// Forgets what was added: the next block begins with nothing.
    void clear() noexcept { changes.queues.clear(); }

    /// Of the last block.
    [[nodiscard]] const std::vector<NoteMessage>& notes() const noexcept { return events.notes; }

    void forgetNotes() noexcept { events.notes.clear(); }

    void setRoomForNotes(std::size_t messages) noexcept { events.room = messages; }

    void setOutput(const Vst3Block& block)
    {
        channels = block.channels;
        busses.assign(static_cast<std::size_t>(std::max(block.busCount, 1)), {});
        busses[0].numChannels = block.channelCount;
        busses[0].channelBuffers32 = block.hasChannels ? channels.data() : nullptr;
        processData.symbolicSampleSize = block.isDouble ? Vst::kSample64 : Vst::kSample32;
        processData.numSamples = block.frames;
        processData.numOutputs = block.busCount;
        processData.outputs = block.hasBusses ? busses.data() : nullptr;
    }

    /// Stereo, as it is at first; this does not allocate.
    void setOutput(float* left, float* right, int frames)
    {
        channels.at(0) = left;
        channels.at(1) = right;
        processData.numSamples = frames;
    }

    [[nodiscard]] Vst::ProcessData& data() noexcept { return processData; }

private:
    std::vector<float*> channels;
    std::vector<Vst::AudioBusBuffers> busses;
    ValueChanges changes;
    ValueChanges answers;
    EventList events;
    Vst::ProcessContext context{};
    Vst::ProcessData processData;
};

class ByteStream final : public IBStream
{
public:
    VELOTRINE_UNCOUNTED

    tresult PLUGIN_API queryInterface(const TUID id, void** object) override
    {
        return answer<IBStream>(*this, IBStream_iid, id, object);
    }

    tresult PLUGIN_API read(void* buffer, int32 wanted, int32* taken) override
    {
        const auto count = std::min(static_cast<std::size_t>(wanted), bytes.size() - position);
        std::memcpy(buffer, bytes.data() + position, count);
        position += count;
        if (taken != nullptr)
            *taken = static_cast<int32>(count);
        return kResultOk;
    }

    tresult PLUGIN_API write(void* buffer, int32 count, int32* written) override
    {
        bytes.append(static_cast<const char*>(buffer), static_cast<std::size_t>(count));
        position = bytes.size();
        if (written != nullptr)
            *written = count;
        return kResultOk;
    }

    tresult PLUGIN_API seek(int64 offset, int32 mode, int64* result) override
    {
        const auto start = mode == kIBSeekSet ? 0 : mode == kIBSeekCur ? position : bytes.size();
        position = static_cast<std::size_t>(
            std::clamp<int64>(static_cast<int64>(start) + offset, 0, static_cast<int64>(bytes.size())));
        return tell(result);
    }

    tresult PLUGIN_API tell(int64* result) override
    {
        if (result != nullptr)
            *result = static_cast<int64>(position);
        return kResultOk;
    }

    std::string bytes;
    std::size_t position = 0;
};

class ComponentHandler final : public Vst::IComponentHandler
{
public:
    VELOTRINE_UNCOUNTED

    tresult PLUGIN_API queryInterface(const TUID id, void** object) override
    {
        return answer<Vst::IComponentHandler>(*this, Vst::IComponentHandler_iid, id, object);
    }

    tresult PLUGIN_API beginEdit(Vst::ParamID id) override
    {
        told.push_back("begin " + nameOf(id));
        return kResultOk;
    }

    tresult PLUGIN_API performEdit(Vst::ParamID id, Vst::ParamValue value) override
    {
        auto text = std::to_string(value);
        text.erase(text.find_last_not_of('0') + 1);
        told.push_back(nameOf(id) + " = " + text);
        return kResultOk;
    }

    tresult PLUGIN_API endEdit(Vst::ParamID id) override
    {
        told.push_back("end " + nameOf(id));
        return kResultOk;
    }

    tresult PLUGIN_API restartComponent(int32) override
    {
        if (onRestart)
            onRestart();
        return kResultOk;
    }

    std::string nameOf(Vst::ParamID id) const
    {
        const auto found = indices.find(id);
        return found != indices.end() ? std::to_string(found->second) : "?";
    }

    std::map<Vst::ParamID, int> indices;
    std::vector<std::string> told;
    std::function<void()> onRestart;
};

class RunLoop final : public Steinberg::Linux::IRunLoop
{
public:
    VELOTRINE_UNCOUNTED

    tresult PLUGIN_API queryInterface(const TUID id, void** object) override
    {
        return answer<Steinberg::Linux::IRunLoop>(*this, Steinberg::Linux::IRunLoop_iid, id, object);
    }

    tresult PLUGIN_API registerEventHandler(Steinberg::Linux::IEventHandler* handler, int descriptor) override
    {
        handlers[descriptor] = handler;
        return kResultOk;
    }

    tresult PLUGIN_API unregisterEventHandler(Steinberg::Linux::IEventHandler* handler) override
    {
        std::erase_if(handlers, [handler](const auto& entry) { return entry.second == handler; });
        return kResultOk;
    }

    tresult PLUGIN_API registerTimer(Steinberg::Linux::ITimerHandler*,
                                     Steinberg::Linux::TimerInterval) override
    {
        return kResultFalse;
    }

    tresult PLUGIN_API unregisterTimer(Steinberg::Linux::ITimerHandler*) override { return kResultFalse; }

    std::map<int, Steinberg::Linux::IEventHandler*> handlers;
};

class PlugFrame final : public IPlugFrame
{
public:
    VELOTRINE_UNCOUNTED

    tresult PLUGIN_API queryInterface(const TUID id, void** object) override
    {
        if (std::memcmp(id, Steinberg::Linux::IRunLoop_iid, sizeof(TUID)) == 0)
            return loop.queryInterface(id, object);
        return answer<IPlugFrame>(*this, IPlugFrame_iid, id, object);
    }

    tresult PLUGIN_API resizeView(IPlugView* view, ViewRect* newSize) override
    {
        return view->onSize(newSize);
    }

    RunLoop loop;
};

} // namespace velotrine::vst3
