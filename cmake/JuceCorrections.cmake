# Corrections of JUCE's own source, where a host's mistake or a damaged session would otherwise end the host and nothing
# that we can set or override lies in between. They are made in copies in the build folder, and only if each text to
# replace is there exactly once: another version of JUCE has to be read again before it is corrected.

include_guard(GLOBAL)

set(VELOTRINE_CORRECTED_JUCE "${PROJECT_BINARY_DIR}/corrected-juce")

# velotrine_read_juce(MODULE FILE): the file's text into `text`, its name into `file`, with line ends as everywhere.
macro(velotrine_read_juce module name)
  set(module "${module}")
  set(file "${name}")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${JUCE_MODULES_DIR}/${module}/${file}")
  file(READ "${JUCE_MODULES_DIR}/${module}/${file}" text)
  string(REPLACE "\r" "" text "${text}")
endmacro()

# velotrine_correct(OLD NEW): replaces the one place in `text` that reads OLD.
function(velotrine_correct old new)
  string(REPLACE "${old}" "" rest "${text}")
  string(LENGTH "${text}" length)
  string(LENGTH "${rest}" rest_length)
  string(LENGTH "${old}" old_length)
  math(EXPR count "(${length} - ${rest_length}) / ${old_length}")
  if(NOT count EQUAL 1)
    message(FATAL_ERROR "cmake/JuceCorrections.cmake is written for JUCE 7.0.5, but in ${JUCE_MODULES_DIR}/${module}/"
                        "${file} this is there ${count} times instead of once: ${old}")
  endif()
  string(REPLACE "${old}" "${new}" text "${text}")
  set(text "${text}" PARENT_SCOPE)
endfunction()

# Writes `text` as the corrected copy of what was read; not again, or everything would be compiled again.
function(velotrine_write_juce)
  set(copy "${VELOTRINE_CORRECTED_JUCE}/${module}/${file}")
  set(before "")
  if(EXISTS "${copy}")
    file(READ "${copy}" before)
  endif()
  if(NOT before STREQUAL text)
    file(WRITE "${copy}" "${text}")
  endif()
endfunction()

# velotrine_use_corrected(FILES...): with `text` as a module's one source, which names its files, the corrected among them,
# and is compiled in the module's place. Its copy finds the corrected files beside it and all others where they are. It
# names them, because a compiler cache does not notice when a file appears where another was found before.
function(velotrine_use_corrected)
  foreach(corrected ${ARGN})
    velotrine_correct("#include \"${corrected}\"" "#include \"${corrected}\" // corrected")
  endforeach()
  velotrine_write_juce()
  get_target_property(sources ${module} INTERFACE_SOURCES)
  list(TRANSFORM sources REPLACE "^.*/${file}$" "${VELOTRINE_CORRECTED_JUCE}/${module}/${file}")
  set_property(TARGET ${module} PROPERTY INTERFACE_SOURCES "${sources}")
  target_include_directories(${module} SYSTEM INTERFACE "${JUCE_MODULES_DIR}/${module}")
endfunction()

# velotrine_catch(RESULT FUNCTION PARAMETERS ARGUMENTS): lets one of the format's functions answer instead of throw.
function(velotrine_catch result name parameters arguments)
  velotrine_correct("${result} PLUGIN_API ${name} (${parameters}) override"
                    "${result} PLUGIN_API ${name} (${parameters}) override
    {
        return velotrine::answerOrFailure ([&] { return ${name}Throwing (${arguments}); });
    }

    ${result} ${name}Throwing (${parameters})")
  set(text "${text}" PARENT_SCOPE)
endfunction()

# velotrine_shield(SIGNATURE): lets one of the editor's functions pass over what X11 says of a host's window that is
# gone. JUCE waits for the server before it lets go of a window of its own, so no answer comes later.
function(velotrine_shield signature)
  velotrine_correct("tresult PLUGIN_API ${signature} override
        {" "tresult PLUGIN_API ${signature} override
        {
            const velotrine::X11ErrorShield shield;
")
  set(text "${text}" PARENT_SCOPE)
endfunction()

# The VST3 wrapper. plugin/vst3/HostChecks.h has the checks and says of each what it is for.
function(velotrine_correct_vst3_wrapper)
  velotrine_read_juce(juce_audio_plugin_client VST3/juce_VST3_Wrapper.cpp)

  set(last_include [[#include <juce_audio_processors/format_types/juce_VST3Common.h>]])
  velotrine_correct("${last_include}" "${last_include}\n#include \"plugin/X11ErrorShield.h\"
#include \"plugin/vst3/HostChecks.h\"")

  # A value that is not a number would stay in the wrapper's own parameters.
  velotrine_correct([[if (param.getValue() == newValue)]]
                    [[if (! std::isfinite (newValue) || param.getValue() == newValue)]])
  set(in_controller [[void setAudioProcessor (JuceAudioProcessor* audioProc)]])
  velotrine_correct("${in_controller}" "tresult PLUGIN_API setParamNormalized (Vst::ParamID id, Vst::ParamValue value) override
    {
        return std::isfinite (value) ? EditController::setParamNormalized (id, jlimit (0.0, 1.0, value))
                                     : kInvalidArgument;
    }

    // The message thread may be speaking to the host that is let go.
    tresult PLUGIN_API setComponentHandler (Vst::IComponentHandler* newHandler) override
    {
        const MessageManagerLock nobodySpeaks;
        return EditController::setComponentHandler (newHandler);
    }

    ${in_controller}")

  # The wrapper believes the length that a state gives of its last part. It says of every state that it was taken.
  velotrine_correct([[auto size = (uint64) sizeAsInt;]] [[velotrine::checkState (data, sizeAsInt);
        auto size = (uint64) sizeAsInt;]])

  # It copies all channels through buffers of the announced size, and leaves those of a bus alone that is not active.
  velotrine_correct([[bufferMapper.prepare (bufferSize);]] "")
  velotrine_correct(
    [[ClientRemappedBuffer<FloatType> remappedBuffer { bufferMapper, data };
        auto& buffer = remappedBuffer.buffer;]]
    [[auto buffer = velotrine::outputOf<FloatType> (data, bufferMapper.getOutputMap().front().isHostActive());]])
  set(first_check [[if ((processSetup.symbolicSampleSize == Vst::kSample64) != pluginInstance->isUsingDoublePrecision())]])
  velotrine_correct("${first_check}" "if (const auto answer = velotrine::checkBlock (data, active); answer != kResultOk)
            return answer;

        ${first_check}")
  velotrine_correct([[if (data.numSamples != 0 || data.numInputs != 0 || data.numOutputs != 0)]]
                    [[velotrine::giveNotesTo (*pluginInstance, isMidiOutputBusEnabled ? data.outputEvents : nullptr);

        if (data.numSamples > 0)]])

  # It takes any rate and any list of busses.
  velotrine_correct([[processSetup = newSetup;]] [[if (! velotrine::HostedInstrument::takesSampleRate (newSetup.sampleRate))
            return kInvalidArgument;

        processSetup = newSetup;]])
  velotrine_correct([[if (numIns > numInputBuses || numOuts > numOutputBuses)
            return false;]] [[if (numIns > numInputBuses || numOuts > numOutputBuses || (numOuts > 0 && outputs == nullptr))
            return kInvalidArgument;]])

  # It lets exceptions through to the host.
  velotrine_catch(tresult setState "IBStream* state" state)
  velotrine_catch(tresult getState "IBStream* state" state)
  velotrine_catch(tresult setComponentState "IBStream* stream" stream)
  velotrine_catch(tresult setActive "TBool state" state)
  velotrine_catch(tresult setupProcessing "Vst::ProcessSetup& newSetup" newSetup)
  velotrine_catch(tresult activateBus "Vst::MediaType type,
                                    Vst::BusDirection dir,
                                    Steinberg::int32 index,
                                    TBool state" "type, dir, index, state")
  velotrine_catch(tresult createInstance "FIDString cid, FIDString sourceIid, void** obj" "cid, sourceIid, obj")
  velotrine_catch(IPlugView* createView "const char* name" name)
  velotrine_correct([[active = willBeActive;]] [[active = willBeActive && std::uncaught_exceptions() == 0;]])

  # A host may destroy the window around the editor at any time, and what the editor then asks of its own window would
  # end the host.
  velotrine_correct([[void PLUGIN_API onFDIsSet (Steinberg::Linux::FileDescriptor fd) override
    {]] [[void PLUGIN_API onFDIsSet (Steinberg::Linux::FileDescriptor fd) override
    {
        const velotrine::X11ErrorShield shield;
]])
  velotrine_shield("attached (void* parent, FIDString type)")
  velotrine_shield("removed()")
  velotrine_shield("onSize (ViewRect* newSize)")
  velotrine_shield("setContentScaleFactor ([[maybe_unused]] const Steinberg::IPlugViewContentScaleSupport::ScaleFactor factor)")

  velotrine_write_juce()
  set_property(TARGET juce_audio_plugin_client_VST3 PROPERTY INTERFACE_SOURCES
               "${VELOTRINE_CORRECTED_JUCE}/juce_audio_plugin_client/VST3/juce_VST3_Wrapper.cpp")
  # From here the wrapper finds its neighbours.
  target_include_directories(juce_audio_plugin_client_VST3 SYSTEM
                             INTERFACE "${JUCE_MODULES_DIR}/juce_audio_plugin_client/VST3")
endfunction()

# The X11 window system. It asks a desktop's settings tools for its theme, which nobody here wants to know, and, if the X
# server does not know it, for its scale: by forking the host, whose threads and locks the child then has half of, and
# waiting for up to 0.2 s each. Without them it takes the scale from the screen's size.
function(velotrine_correct_x11)
  velotrine_read_juce(juce_gui_basics native/x11/juce_linux_XWindowSystem.cpp)
  foreach(command "dconf read /com/ubuntu/user-interface/scale-factor"
                  "gsettings get org.gnome.desktop.interface scaling-factor"
                  "gsettings get org.gnome.desktop.interface gtk-theme")
    string(REGEX MATCH "^[a-z]+" tool "${command}")
    velotrine_correct("${tool}.start (\"/usr/bin/${command}\", ChildProcess::wantStdOut)" "false")
  endforeach()

  # Shift, Ctrl or Alt that is released where no window of ours hears it, as behind Alt+Tab, would stay down for all keys
  # until the mouse moves. Each key tells which of them are down.
  velotrine_correct([[updateKeyStates ((int) keyEvent.keycode, true);]]
                    [[updateKeyStates ((int) keyEvent.keycode, true);
        updateKeyModifiers ((int) keyEvent.state);]])

  # A window that others cover wholly need not paint. The server says so, if it is asked; ConcentricCirclesViewMac reads
  # it from the window's component.
  velotrine_correct([[return NoEventMask | KeyPressMask]] [[return NoEventMask | VisibilityChangeMask | KeyPressMask]])
  velotrine_correct([[        case CirculateNotify:
]] [[        case VisibilityNotify:
            peer->getComponent().getProperties().set ("covered", event.xvisibility.state == VisibilityFullyObscured);
            break;

        case CirculateNotify:
]])

  # The server answers each rectangle that it was sent. One answer for all is enough, and that to the last of them: what
  # comes before was done before. The other file knows which is the last.
  velotrine_correct([[        if (isUsingXShm())
            XWindowSystem::getInstance()->addPendingPaintForWindow (window);]]
                    [[        if (isUsingXShm() && isLastRectangleOfPaint)
            XWindowSystem::getInstance()->addPendingPaintForWindow (window);]])
  velotrine_correct([[gc, xImage.get(), sx, sy, dx, dy, dw, dh, True);]]
                    [[gc, xImage.get(), sx, sy, dx, dy, dw, dh, isLastRectangleOfPaint ? True : False);]])

  # What waits for the server's answer may get events with it. They are in hand then, and the connection has nothing more
  # to read, so that the message loop would sleep on them: a key would do nothing until the mouse moves. Now whoever lets
  # go of the connection while events are in hand, has them dispatched soon.
  set(includes_end [[XWindowSystemUtilities::ScopedXLock::ScopedXLock()]])
  velotrine_correct("${includes_end}
{" "static std::atomic<bool> eventsWillBeDispatched { false };

static void dispatchEventsInHand (::Display* d)
{
    if (QLength (d) == 0 || eventsWillBeDispatched.exchange (true))
        return;

    // Also where the message is never read.
    struct Promise { ~Promise() { eventsWillBeDispatched = false; } };

    MessageManager::callAsync ([promise = std::make_shared<Promise>()]
    {
        eventsWillBeDispatched = false;

        if (auto* xWindow = XWindowSystem::getInstanceWithoutCreating())
            if (auto* display = xWindow->getDisplay())
                LinuxEventLoopInternal::invokeEventLoopCallbackForFd (X11Symbols::getInstance()->xConnectionNumber (display));
    });
}

${includes_end}
{")
  velotrine_correct([[            X11Symbols::getInstance()->xUnlockDisplay (d);
}]] [[        {
            dispatchEventsInHand (d);
            X11Symbols::getInstance()->xUnlockDisplay (d);
        }
}]])
  velotrine_write_juce()

  # A window's timer asks at every refresh of the screen whether there is something to paint, for as long as the window is
  # there. Here it ends once all is painted, nobody asks for the screen's refreshes and the image that was painted with
  # is gone (three seconds later); what is to be painted next starts it again.
  velotrine_read_juce(juce_gui_basics native/juce_linux_Windowing.cpp)
  velotrine_correct([[repainter->repaint (area.getIntersection (bounds.withZeroOrigin()));]]
                    [[repainter->repaint (area.getIntersection (bounds.withZeroOrigin()));

        if (! vBlankManager.isTimerRunning())
            updateVBlankTimer();]])
  velotrine_correct([[            repainter->dispatchDeferredRepaints();
    }]] [[            repainter->dispatchDeferredRepaints();

        if (vBlankListeners.isEmpty() && (repainter == nullptr || repainter->isAtRest()))
            vBlankManager.stopTimer();
    }]])
  # A screen that does not tell its rate, as virtual ones do not, is a slow one rather than a fast one.
  velotrine_correct("newIntFrequencyHz : 100;" "newIntFrequencyHz : 50;")
  # It empties what an opaque window paints over anyway.
  velotrine_correct([[if (XWindowSystem::getInstance()->canUseARGBImages())
                    for]] [[if (XWindowSystem::getInstance()->canUseARGBImages() && ! peer.getComponent().isOpaque())
                    for]])
  velotrine_correct([[                for (auto& i : originalRepaintRegion)
                   XWindowSystem::getInstance()->blitToWindow (peer.windowH, image, i, totalArea);]]
                    [[                for (auto& i : originalRepaintRegion)
                {
                    isLastRectangleOfPaint = &i == std::prev (originalRepaintRegion.end());
                    XWindowSystem::getInstance()->blitToWindow (peer.windowH, image, i, totalArea);
                }]])
  velotrine_correct([[class LinuxComponentPeer  : public ComponentPeer]]
                    [[static bool isLastRectangleOfPaint = true; // on the message thread

class LinuxComponentPeer  : public ComponentPeer]])
  velotrine_correct([[        void repaint (Rectangle<int> area)
        {]] [[        bool isAtRest() const { return regionsNeedingRepaint.isEmpty() && image.isNull(); }

        void repaint (Rectangle<int> area)
        {]])
  velotrine_write_juce()

  # While somebody listens to the mouse wherever it is, as each text field does, it asks the server ten times a second
  # whether the mouse has moved over others' windows, which concerns nobody here.
  velotrine_read_juce(juce_gui_basics desktop/juce_Desktop.cpp)
  velotrine_correct([[    if (mouseListeners.size() == 0)
        stopTimer();
    else
        startTimer (100);
]] [[    stopTimer();
]])
  velotrine_write_juce()

  velotrine_read_juce(juce_gui_basics juce_gui_basics.cpp)
  velotrine_correct([[#include "juce_gui_basics.h"]] [[#include "juce_gui_basics.h"
#include <juce_events/native/juce_linux_EventLoopInternal.h>]])
  velotrine_use_corrected(desktop/juce_Desktop.cpp native/x11/juce_linux_XWindowSystem.cpp
                          native/juce_linux_Windowing.cpp)
endfunction()

# The message thread's lock, which lies on the stack of whoever takes it, as hosts' threads do when they let go of a VST3
# plug-in. It counts as taken while the message thread is still signalling that it is: whoever looked in that moment
# could be done, and the lock gone, before the signal was over. Now the message thread's call has to be over, too.
function(velotrine_correct_messages)
  velotrine_read_juce(juce_events messages/juce_MessageManager.cpp)
  velotrine_correct([[            mm->threadWithLock = Thread::getCurrentThreadId();
            return true;]] [[            const ScopedLock callbackIsOver (blockingMessage->ownerCriticalSection);
            mm->threadWithLock = Thread::getCurrentThreadId();
            return true;]])
  velotrine_write_juce()

  velotrine_correct_timers()

  velotrine_read_juce(juce_events juce_events.cpp)
  velotrine_correct("#include <unistd.h>" "#include <unistd.h>
 #include <sys/timerfd.h>")
  velotrine_use_corrected(messages/juce_MessageManager.cpp timers/juce_Timer.cpp native/juce_linux_Messaging.cpp)
  set_source_files_properties("${VELOTRINE_CORRECTED_JUCE}/juce_events/juce_events.cpp"
                              PROPERTIES INCLUDE_DIRECTORIES "${PROJECT_SOURCE_DIR}")
endfunction()

# A thread of the toolkit's own waits for the next timer, tells the message thread, and waits until that has answered: a
# processor wakes four times for each time that a timer comes, and one that is started meanwhile can come 100 ms too
# early. cmake/JuceTimers.h does without the thread.
function(velotrine_correct_timers)
  velotrine_read_juce(juce_events timers/juce_Timer.cpp)
  set(begin "class Timer::TimerThread  : private Thread,")
  set(end "Timer::TimerThread::LockType Timer::TimerThread::lock;")
  foreach(mark "${begin}" "${end}")
    velotrine_correct("${mark}" "${mark}") # which are there once
  endforeach()
  string(FIND "${text}" "${begin}" place)
  string(SUBSTRING "${text}" ${place} -1 class)
  string(FIND "${class}" "${end}" length)
  string(SUBSTRING "${class}" 0 ${length} class)
  velotrine_correct("${class}" "#include \"cmake/JuceTimers.h\"\n\n")
  velotrine_correct([[    if (TimerThread::instance != nullptr)
        TimerThread::instance->callTimersSynchronously();]] [[    if (auto* alarm = TimerAlarm::getInstanceWithoutCreating())
        alarm->callDueTimers();]])
  velotrine_write_juce()

  velotrine_read_juce(juce_events native/juce_linux_Messaging.cpp)
  velotrine_correct("    InternalMessageQueue::getInstance();" "    InternalMessageQueue::getInstance();
    TimerAlarm::getInstance();")
  velotrine_correct("    InternalMessageQueue::deleteInstance();" "    TimerAlarm::deleteInstance();
    InternalMessageQueue::deleteInstance();")
  velotrine_write_juce()
endfunction()

# The audio devices.
function(velotrine_correct_devices)
  # While the message thread is changing whom they ask for sound, their own thread would wait for it. Silence is due then
  # anyway.
  velotrine_read_juce(juce_audio_devices native/juce_linux_ALSA.cpp)
  velotrine_correct([[const ScopedLock sl (callbackLock);
                ++numCallbacks;

                if (callback]] [[const ScopedTryLock sl (callbackLock);
                ++numCallbacks;

                if (sl.isLocked() && callback]])
  velotrine_write_juce()

  velotrine_read_juce(juce_audio_devices native/juce_linux_JackAudio.cpp)
  velotrine_correct([[const ScopedLock sl (callbackLock);

        if (callback]] [[if (sl.isLocked() && callback]])

  # Which of its ports are connected changes on the message thread, and JACK's thread has to see it whole: both hold the
  # lock. Without it, all outputs are silent.
  velotrine_correct([[activeOutputChannels = newOutputChannels;
            activeInputChannels  = newInputChannels;
]] [[{
                const ScopedLock sl (callbackLock);
                activeOutputChannels = newOutputChannels;
                activeInputChannels  = newInputChannels;
            }
]])
  velotrine_correct("if (activeInputChannels[i])" "if (sl.isLocked() && activeInputChannels[i])")
  velotrine_correct("if (activeOutputChannels[i])" "if (! sl.isLocked() || activeOutputChannels[i])")

  # When the server ends, JACK says so on a thread of its own, which would close the device while the message thread uses
  # it. That one closes it, when it next asks.
  velotrine_correct([[device->client = nullptr;
            device->close();]] [[device->serverIsGone = true;]])
  velotrine_correct("return deviceIsOpen; }" "return deviceIsOpen && ! serverIsGone; }")
  velotrine_correct("return callback != nullptr; }" "return callback != nullptr && ! serverIsGone; }")
  velotrine_correct([[        stop();

        if (client != nullptr)]] [[        if (serverIsGone.exchange (false))
            client = nullptr;

        stop();

        if (client != nullptr)]])

  # JACK's knows only sound; the notes' port has to be of the same client, or the two would be cycles apart. So the device
  # takes notes as well (audiounit/NoteOutput.h), while it asks for sound. It asks in every cycle, whether or not a port
  # for sound is connected: something may listen to the notes alone.
  velotrine_correct([[class JackAudioIODevice   : public AudioIODevice
]] [[class JackAudioIODevice   : public AudioIODevice, public velotrine::NoteReceiver
]])
  set(last_function [[JUCE_DECL_VOID_JACK_FUNCTION (jack_free, (void* ptr), (ptr))]])
  velotrine_correct("${last_function}" "${last_function}
JUCE_DECL_VOID_JACK_FUNCTION (jack_midi_clear_buffer, (void* buffer), (buffer))
JUCE_DECL_JACK_FUNCTION (int, jack_midi_event_write, (void* buffer, jack_nframes_t time, const jack_midi_data_t* data, size_t size), (buffer, time, data, size))")
  set(after_ports [[inChans.calloc (totalNumberOfInputChannels + 2);]])
  velotrine_correct("${after_ports}" "notePort = juce::jack_port_register (client, \"notes\", JACK_DEFAULT_MIDI_TYPE,
                                                  JackPortIsOutput, 0);

            ${after_ports}")
  velotrine_correct([[int numActiveInChans = 0, numActiveOutChans = 0;
]] [[const ScopedTryLock sl (callbackLock);
        int numActiveInChans = 0, numActiveOutChans = 0;

        noteBuffer = notePort != nullptr ? juce::jack_port_get_buffer (notePort, static_cast<jack_nframes_t> (numSamples))
                                         : nullptr;
        if (noteBuffer != nullptr)
            juce::jack_midi_clear_buffer (noteBuffer);
]])
  velotrine_correct([[            if ((numActiveInChans + numActiveOutChans) > 0)
                callback->]] [[            callback->]])
  set(first_member [[    bool deviceIsOpen = false;
    jack_client_t* client = nullptr;]])
  velotrine_correct("${first_member}" "    bool take (const velotrine::NoteMessage& message) noexcept override
    {
        const auto bytes = message.bytes();
        return noteBuffer != nullptr
                && juce::jack_midi_event_write (noteBuffer, static_cast<jack_nframes_t> (message.frame),
                                                bytes.data(), bytes.size()) == 0;
    }

    std::atomic<bool> serverIsGone { false };
    jack_port_t* notePort = nullptr;
    void* noteBuffer = nullptr; // of the cycle that is being processed
${first_member}")
  velotrine_write_juce()

  velotrine_read_juce(juce_audio_devices juce_audio_devices.cpp)
  velotrine_correct("#include <jack/jack.h>" "#include <jack/jack.h>
 #include <jack/midiport.h>
 #include \"audiounit/NoteOutput.h\"")
  velotrine_use_corrected(native/juce_linux_ALSA.cpp native/juce_linux_JackAudio.cpp)
  # With the name under which JACK's patch bays show the application.
  set_source_files_properties(
    "${VELOTRINE_CORRECTED_JUCE}/juce_audio_devices/juce_audio_devices.cpp"
    PROPERTIES COMPILE_DEFINITIONS JUCE_JACK_CLIENT_NAME="${PROJECT_NAME}" INCLUDE_DIRECTORIES "${PROJECT_SOURCE_DIR}")
endfunction()
