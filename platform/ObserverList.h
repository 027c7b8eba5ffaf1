#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace velotrine {

/// Names an observer so that it can be removed, or left out. 0 is nobody.
using ObserverToken = std::uint64_t;

/// Closures to be told of something. Any thread may add, remove and notify. An observer may do all three in
/// its turn: one that it removes is no longer called, one that it adds hears the next notification. A
/// removed one may still be running on another thread when remove() returns. Not for the render thread: it
/// locks.
template <typename... Arguments>
class ObserverList
{
public:
    using Observer = std::function<void(Arguments...)>;

    ObserverToken add(Observer observer)
    {
        const std::scoped_lock lock(mutex);
        auto changed = std::make_shared<Entries>(*entries);
        changed->push_back(std::make_shared<Entry>(++lastToken, std::move(observer)));
        entries = std::move(changed);
        return lastToken;
    }

    void remove(ObserverToken token)
    {
        const std::scoped_lock lock(mutex);
        auto changed = std::make_shared<Entries>(*entries);
        std::erase_if(*changed, [token](const auto& entry) {
            if (entry->token != token)
                return false;
            entry->removed = true;
            return true;
        });
        entries = std::move(changed);
    }

    /// Tells everyone but the one that caused it. Runs on the caller's thread.
    void notify(ObserverToken originator, Arguments... arguments) const
    {
        const auto current = snapshot();
        for (const auto& entry : *current)
            if (entry->token != originator && !entry->removed)
                entry->observer(arguments...);
    }

private:
    struct Entry
    {
        Entry(ObserverToken newToken, Observer newObserver)
            : token(newToken), observer(std::move(newObserver))
        {}

        ObserverToken token;
        Observer observer;
        std::atomic<bool> removed{false}; ///< for the notifications that began before
    };

    using Entries = std::vector<std::shared_ptr<Entry>>;

    std::shared_ptr<const Entries> snapshot() const
    {
        const std::scoped_lock lock(mutex);
        return entries;
    }

    mutable std::mutex mutex;
    std::shared_ptr<const Entries> entries = std::make_shared<Entries>();
    ObserverToken lastToken = 0;
};

} // namespace velotrine
