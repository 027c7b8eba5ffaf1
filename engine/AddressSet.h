#pragma once

#include "engine/FatalError.h"
#include "engine/ParameterAddress.h"

#include <atomic>
#include <bit>
#include <cstdint>
#include <iterator>

namespace velotrine {

/// A set of parameters, by address, in one machine word. Going through it yields the addresses in ascending
/// order. A plain value: for one thread at a time; see SharedAddressSet for several.
class AddressSet
{
public:
    class Iterator
    {
    public:
        constexpr explicit Iterator(std::uint64_t remainingBits) noexcept : remaining(remainingBits) {}

        constexpr ParameterAddress operator*() const noexcept
        {
            return static_cast<ParameterAddress>(std::countr_zero(remaining));
        }

        constexpr Iterator& operator++() noexcept
        {
            remaining &= remaining - 1; // the lowest one goes
            return *this;
        }

        constexpr bool operator==(std::default_sentinel_t) const noexcept { return remaining == 0; }

    private:
        std::uint64_t remaining;
    };

    constexpr AddressSet() noexcept = default;

    /// The set of this one address. An address that no parameter has stops the program.
    constexpr explicit AddressSet(ParameterAddress address) noexcept : bits(bitOf(address)) {}

    /// Every parameter there is.
    [[nodiscard]] static constexpr AddressSet all() noexcept
    {
        return fromBits(~std::uint64_t{0} >> (64 - parameterCount));
    }

    [[nodiscard]] constexpr bool isEmpty() const noexcept { return bits == 0; }

    /// False for an address that no parameter has.
    [[nodiscard]] constexpr bool contains(ParameterAddress address) const noexcept
    {
        return address < parameterCount && (bits & bitOf(address)) != 0;
    }

    /// An address that no parameter has stops the program.
    constexpr void insert(ParameterAddress address) noexcept { bits |= bitOf(address); }

    constexpr void erase(ParameterAddress address) noexcept { bits &= ~bitOf(address); }

    /// What is in either.
    [[nodiscard]] constexpr AddressSet operator|(AddressSet other) const noexcept
    {
        return fromBits(bits | other.bits);
    }

    /// What is in one of them but not in both.
    [[nodiscard]] constexpr AddressSet operator^(AddressSet other) const noexcept
    {
        return fromBits(bits ^ other.bits);
    }

    constexpr bool operator==(const AddressSet&) const noexcept = default;

    [[nodiscard]] constexpr Iterator begin() const noexcept { return Iterator(bits); }

    [[nodiscard]] constexpr std::default_sentinel_t end() const noexcept { return {}; }

private:
    friend class SharedAddressSet;

    static constexpr AddressSet fromBits(std::uint64_t bits) noexcept
    {
        AddressSet set;
        set.bits = bits;
        return set;
    }

    [[nodiscard]] static constexpr std::uint64_t bitOf(ParameterAddress address) noexcept
    {
        static_assert(parameterCount <= 64);
        if (address >= parameterCount)
            fatalError("AddressSet: no parameter has this address");
        return std::uint64_t{1} << address;
    }

    std::uint64_t bits = 0;
};

/// An AddressSet that any number of threads change and read at the same time, the render thread among them:
/// each function is one atomic operation of the machine and never waits. What a thread wrote before it
/// inserted an address can be read by whoever then finds the address here. Any thread.
class SharedAddressSet
{
public:
    static_assert(std::atomic<std::uint64_t>::is_always_lock_free,
                  "the render thread must never wait for a lock");

    SharedAddressSet() noexcept = default;
    SharedAddressSet(const SharedAddressSet&) = delete;
    SharedAddressSet& operator=(const SharedAddressSet&) = delete;

    /// An address that no parameter has stops the program.
    void insert(ParameterAddress address) noexcept { insert(AddressSet(address)); }

    void insert(AddressSet addresses) noexcept { bits.fetch_or(addresses.bits); }

    void erase(ParameterAddress address) noexcept { bits.fetch_and(~AddressSet::bitOf(address)); }

    [[nodiscard]] bool contains(ParameterAddress address) const noexcept { return load().contains(address); }

    /// What is in it at this moment.
    [[nodiscard]] AddressSet load() const noexcept { return AddressSet::fromBits(bits.load()); }

    /// Empties the set and returns what was in it: each inserted address goes to exactly one taker.
    [[nodiscard]] AddressSet takeAll() noexcept
    {
        // Mostly it is empty, and an exchange costs many times what a look does.
        return bits.load() != 0 ? AddressSet::fromBits(bits.exchange(0)) : AddressSet();
    }

private:
    std::atomic<std::uint64_t> bits{0};
};

} // namespace velotrine
