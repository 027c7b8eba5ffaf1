// Takes the place of JUCE's thread for timers, inside its namespace (cmake/JuceCorrections.cmake): the kernel
// wakes the message thread itself, by a descriptor beside those of messages and windows.

/// Calls all timers on the message thread, from where messages begin to where they end. Timers are started
/// and stopped on any thread.
class TimerAlarm
{
public:
    TimerAlarm()
    {
        LinuxEventLoop::registerFdCallback(descriptor, [this](int) { callDueTimers(); });
    }

    ~TimerAlarm()
    {
        LinuxEventLoop::unregisterFdCallback(descriptor);
        close(descriptor);
        clearSingletonInstance();
    }

    /// From now on, also if it has been started before.
    void start(Timer& timer, std::chrono::milliseconds interval)
    {
        const ScopedLock scopedLock(lock);
        stop(timer);
        timers.push_back({&timer, interval, Clock::now() + interval});
        setForNext();
    }

    void stop(Timer& timer)
    {
        const ScopedLock scopedLock(lock);
        timers.erase(std::remove_if(timers.begin(), timers.end(),
                                    [&timer](const Entry& entry) { return entry.timer == &timer; }),
                     timers.end());
    }

    /// Each that is due, once.
    void callDueTimers()
    {
        std::uint64_t times = 0;
        [[maybe_unused]] const auto size = read(descriptor, &times, sizeof(times));
        // What JUCE takes as the time where about will do is then a tenth of a second old at most.
        Time::getMillisecondCounter();
        const auto now = Clock::now();
        const ScopedLock scopedLock(lock);
        for (auto next = findNext(); next != timers.end() && next->call() <= now; next = findNext()) {
            auto* const timer = next->timer;
            // Regular in the long run, unless it is far behind.
            next->due = std::max(next->due, now - next->interval + Resolution(1)) + next->interval;
            // The callback may wait for messages.
            setForNext();
            const ScopedUnlock scopedUnlock(lock);
            JUCE_TRY
            {
                timer->timerCallback();
            }
            JUCE_CATCH_EXCEPTION
        }
        setForNext();
    }

    JUCE_DECLARE_SINGLETON(TimerAlarm, false)

private:
    using Clock = std::chrono::steady_clock; // CLOCK_MONOTONIC
    using Resolution = std::chrono::nanoseconds;

    struct Entry
    {
        Timer* timer;
        std::chrono::milliseconds interval;
        Clock::time_point due;

        /// When it is called: slow ones at the next whole tenth of a second, others at the next whole
        /// fiftieth, so that one waking does for all; the fast when they are due.
        Clock::time_point call() const
        {
            constexpr std::chrono::milliseconds tenth(100);
            constexpr std::chrono::milliseconds fiftieth(20);
            const auto whole = interval >= tenth ? tenth : fiftieth;
            return interval < fiftieth ? due : due + (whole - due.time_since_epoch() % whole) % whole;
        }
    };

    std::vector<Entry>::iterator findNext()
    {
        return std::min_element(timers.begin(), timers.end(),
                                [](const Entry& a, const Entry& b) { return a.call() < b.call(); });
    }

    void setForNext()
    {
        const auto next = findNext();
        if (next == timers.end())
            return;
        const auto call = std::chrono::duration_cast<Resolution>(next->call().time_since_epoch()).count();
        constexpr auto second = 1000000000;
        const itimerspec time{{0, 0}, {call / second, call % second}};
        timerfd_settime(descriptor, TFD_TIMER_ABSTIME, &time, nullptr);
    }

    const int descriptor = timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC);
    CriticalSection lock;
    std::vector<Entry> timers;
};

JUCE_IMPLEMENT_SINGLETON(TimerAlarm)

/// What JUCE's timers call. Without messages, they never come.
class Timer::TimerThread
{
public:
    using LockType = CriticalSection;

    static void add(Timer* timer) { resetCounter(timer); }

    static void resetCounter(Timer* timer)
    {
        if (auto* const alarm = TimerAlarm::getInstanceWithoutCreating())
            alarm->start(*timer, std::chrono::milliseconds(timer->timerPeriodMs));
    }

    static void remove(Timer* timer)
    {
        if (auto* const alarm = TimerAlarm::getInstanceWithoutCreating())
            alarm->stop(*timer);
    }

    static LockType lock;
};
