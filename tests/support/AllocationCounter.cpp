#include "tests/support/AllocationCounter.h"

#include "tests/support/AllocationFailure.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

thread_local bool counting = false;
thread_local int counted = 0;

thread_local bool failing = false;
thread_local int succeeding = 0;
thread_local velotrine::AllocationFailure::Then then = velotrine::AllocationFailure::Then::succeed;
thread_local bool failed = false;

void note() noexcept
{
    if (counting)
        ++counted;
}

bool mustFail() noexcept
{
    if (!failing || succeeding-- > 0)
        return false;
    failing = then == velotrine::AllocationFailure::Then::fail;
    failed = true;
    return true;
}

void* taken(void* memory)
{
    note();
    if (memory == nullptr)
        throw std::bad_alloc();
    if (mustFail()) {
        std::free(memory);
        throw std::bad_alloc();
    }
    return memory;
}

void give(void* memory) noexcept
{
    note();
    std::free(memory);
}

/// At least one byte, so that nullptr always means failure, and a multiple of the alignment.
std::size_t roundedUp(std::size_t size, std::size_t alignment) noexcept
{
    return (size / alignment + 1) * alignment;
}

} // namespace

namespace velotrine {

AllocationCounter::AllocationCounter() noexcept
{
    counted = 0;
    counting = true;
}

AllocationCounter::~AllocationCounter()
{
    counting = false;
}

int AllocationCounter::count() const noexcept
{
    return counted;
}

AllocationFailure::AllocationFailure(int allocationsBefore, Then thenDo) noexcept
{
    succeeding = allocationsBefore;
    then = thenDo;
    failed = false;
    failing = true;
}

AllocationFailure::~AllocationFailure()
{
    failing = false;
}

bool AllocationFailure::hasHappened() const noexcept
{
    return failed;
}

} // namespace velotrine

// The library's other forms come down to these; but an address sanitizer's own do not, so the one nothrow
// form that anybody calls is here, too.

void* operator new(std::size_t size)
{
    return taken(std::malloc(roundedUp(size, 1)));
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    note();
    return mustFail() ? nullptr : std::malloc(roundedUp(size, 1));
}

void* operator new(std::size_t size, std::align_val_t alignment)
{
    const auto bytes = static_cast<std::size_t>(alignment);
    return taken(std::aligned_alloc(bytes, roundedUp(size, bytes)));
}

void operator delete(void* memory) noexcept
{
    give(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    give(memory);
}

void operator delete(void* memory, std::align_val_t) noexcept
{
    give(memory);
}

void operator delete(void* memory, std::size_t, std::align_val_t) noexcept
{
    give(memory);
}
