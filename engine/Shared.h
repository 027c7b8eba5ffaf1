#pragma once

#include <atomic>

namespace velotrine {

/// A value that several threads read and write without waiting for each other: a parameter, or what the
/// display shows. It reads and writes like a T; each access is one plain load or store of the machine.
/// Accesses to different values are not ordered, and need not be: each value is used for itself.
template <typename T>
class Shared
{
public:
    static_assert(std::atomic<T>::is_always_lock_free, "the render thread must never wait for a lock");

    constexpr Shared() noexcept = default;

    constexpr Shared(T initial) noexcept : value(initial) {}

    Shared(const Shared&) = delete;
    Shared& operator=(const Shared&) = delete;

    T load() const noexcept { return value.load(std::memory_order_relaxed); }

    void store(T newValue) noexcept { value.store(newValue, std::memory_order_relaxed); }

    operator T() const noexcept { return load(); }

    Shared& operator=(T newValue) noexcept
    {
        store(newValue);
        return *this;
    }

private:
    std::atomic<T> value{};
};

static_assert(sizeof(Shared<float>) == sizeof(float) && sizeof(Shared<double>) == sizeof(double));

} // namespace velotrine
