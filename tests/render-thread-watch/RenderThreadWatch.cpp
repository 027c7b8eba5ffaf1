// A library to be loaded before all others (LD_PRELOAD) into an LV2 host that others wrote, or into the
// application with a JACK server. It sees when the host lets the plug-in run, or the server the application,
// and writes down, with the stack, what is done on that thread in there and must not be:
//
// - memory taken or given back,
// - a lock, whether or not it had to wait: on another day it would,
// - a call that waits, or that reads, writes or opens anything.
//
// It sees calls from one library to another, not what the C library does within itself. Plug-in and
// application need nothing for it: the host's question for the format's entry comes by here, and gets another
// run(); the application's for JACK's functions does, too.
//
// In the environment: VELOTRINE_WATCH_LOG, a file to write to, at its end; VELOTRINE_WATCH_PLANT, one of
// malloc, lock, sleep, to do that in each call, and so to show that it is seen.

#include <lv2/core/lv2.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <semaphore.h>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>

#define WATCHED extern "C" __attribute__((visibility("default")))

// The C library's own, under names that stay when malloc is another.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* memory);
}

// NOLINTEND(bugprone-reserved-identifier)

namespace {

__attribute__((tls_model("initial-exec"))) thread_local bool isInside = false;
std::atomic<long> calls{0};
std::atomic<long> findings{0};

int logFile()
{
    static const int descriptor = [] {
        const auto* const name = std::getenv("VELOTRINE_WATCH_LOG");
        return name != nullptr ? ::open(name, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600)
                               : STDERR_FILENO;
    }();
    return descriptor;
}

/// Writes down what is done, if it is done inside. The first few have their stacks written down, too.
void note(const char* what)
{
    if (!isInside)
        return;
    isInside = false; // for what writing down does itself
    constexpr long described = 20;
    if (++findings <= described) {
        dprintf(logFile(), "on the render thread: %s\n", what);
        std::array<void*, 30> stack{};
        backtrace_symbols_fd(stack.data(), backtrace(stack.data(), static_cast<int>(stack.size())),
                             logFile());
    }
    isInside = true;
}

/// The function of this name that would be called without this library.
template <typename Function>
Function* next(const char* name)
{
    return reinterpret_cast<Function*>(dlvsym(RTLD_NEXT, name, "GLIBC_2.2.5"));
}

enum class Plant
{
    none,
    allocation,
    lock,
    sleep,
};

Plant plantFromEnvironment()
{
    const auto* const name = std::getenv("VELOTRINE_WATCH_PLANT");
    const std::string_view wanted(name != nullptr ? name : "");
    return wanted == "malloc"  ? Plant::allocation
           : wanted == "lock"  ? Plant::lock
           : wanted == "sleep" ? Plant::sleep
                               : Plant::none;
}

const Plant plant = plantFromEnvironment();

void doWhatIsPlanted()
{
    static pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    static void* (*volatile take)(std::size_t) = std::malloc;
    constexpr timespec moment{.tv_sec = 0, .tv_nsec = 1000};
    if (plant == Plant::allocation)
        std::free(take(16));
    if (plant == Plant::lock && pthread_mutex_lock(&mutex) == 0)
        pthread_mutex_unlock(&mutex);
    if (plant == Plant::sleep)
        nanosleep(&moment, nullptr);
}

template <typename Render>
auto watched(Render&& render)
{
    struct Inside
    {
        Inside() { isInside = true; }

        ~Inside() { isInside = false; }
    };

    ++calls;
    const Inside inside;
    doWhatIsPlanted();
    return render();
}

const LV2_Descriptor* (*realLv2Descriptor)(std::uint32_t index) = nullptr;
void (*realRun)(LV2_Handle instance, std::uint32_t frames) = nullptr;

const LV2_Descriptor* lv2Descriptor(std::uint32_t index)
{
    static LV2_Descriptor changed;
    const auto* const real = realLv2Descriptor(index);
    if (real == nullptr || std::strstr(real->URI, "velotrine") == nullptr)
        return real;
    changed = *real;
    realRun = real->run;
    changed.run = [](LV2_Handle instance, std::uint32_t frames) {
        watched([=] { realRun(instance, frames); });
    };
    return &changed;
}

using JackProcess = int (*)(std::uint32_t frames, void* argument);

int (*realSetProcess)(void* client, JackProcess process, void* argument) = nullptr;
JackProcess realProcess = nullptr;

int setProcess(void* client, JackProcess process, void* argument)
{
    realProcess = process;
    const auto watchedProcess = [](std::uint32_t frames, void* data) {
        return watched([=] { return realProcess(frames, data); });
    };
    return realSetProcess(client, watchedProcess, argument);
}

/// The first report would otherwise take memory itself.
__attribute__((constructor)) void begin()
{
    std::array<void*, 2> stack{};
    backtrace(stack.data(), static_cast<int>(stack.size()));
    logFile();
}

__attribute__((destructor)) void end()
{
    // A program that was started on the way, such as a shell, has nothing to say.
    if (calls > 0)
        dprintf(logFile(), "render calls: %ld, findings: %ld\n", calls.load(), findings.load());
}

} // namespace

WATCHED void* dlsym(void* library, const char* name)
{
    static auto* const real = next<void*(void*, const char*)>("dlsym");
    void* const found = real(library, name);
    const std::string_view wanted(name);
    if (found == nullptr)
        return nullptr;
    if (wanted == "lv2_descriptor") {
        const auto function = reinterpret_cast<decltype(realLv2Descriptor)>(found);
        const auto* const first = function(0);
        if (first == nullptr || std::strstr(first->URI, "velotrine") == nullptr)
            return found;
        realLv2Descriptor = function;
        return reinterpret_cast<void*>(lv2Descriptor);
    }
    if (wanted == "jack_set_process_callback") {
        realSetProcess = reinterpret_cast<decltype(realSetProcess)>(found);
        return reinterpret_cast<void*>(setProcess);
    }
    return found;
}

// Memory

WATCHED void* malloc(std::size_t size)
{
    note("malloc");
    return __libc_malloc(size);
}

WATCHED void* calloc(std::size_t count, std::size_t size)
{
    note("calloc");
    return __libc_calloc(count, size);
}

WATCHED void* realloc(void* memory, std::size_t size)
{
    note("realloc");
    return __libc_realloc(memory, size);
}

WATCHED void* aligned_alloc(std::size_t alignment, std::size_t size)
{
    note("aligned_alloc");
    return __libc_memalign(alignment, size);
}

WATCHED void* memalign(std::size_t alignment, std::size_t size)
{
    note("memalign");
    return __libc_memalign(alignment, size);
}

WATCHED int posix_memalign(void** memory, std::size_t alignment, std::size_t size)
{
    note("posix_memalign");
    *memory = __libc_memalign(alignment, size);
    return *memory != nullptr ? 0 : 12; // ENOMEM
}

WATCHED void free(void* memory)
{
    if (memory != nullptr)
        note("free");
    __libc_free(memory);
}

// All others: noted, then done.

// NOLINTBEGIN(bugprone-macro-parentheses): a type and its parameters
#define WATCH(result, name, parameters, arguments)                                                           \
    WATCHED result name parameters                                                                           \
    {                                                                                                        \
        static auto* const real = reinterpret_cast<result(*) parameters>(dlsym(RTLD_NEXT, #name));           \
        note(#name);                                                                                         \
        return real arguments;                                                                               \
    }
// NOLINTEND(bugprone-macro-parentheses)

// clang-format off
WATCH(int, pthread_mutex_lock, (pthread_mutex_t* mutex), (mutex))
WATCH(int, pthread_mutex_timedlock, (pthread_mutex_t* mutex, const timespec* time), (mutex, time))
WATCH(int, pthread_rwlock_rdlock, (pthread_rwlock_t* lock), (lock))
WATCH(int, pthread_rwlock_wrlock, (pthread_rwlock_t* lock), (lock))
WATCH(int, pthread_spin_lock, (pthread_spinlock_t* lock), (lock))
WATCH(int, pthread_join, (pthread_t thread, void** result), (thread, result))
WATCH(int, pthread_create, (pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*), void* argument), (thread, attributes, start, argument))
WATCH(int, sem_wait, (sem_t* semaphore), (semaphore))
WATCH(int, sem_timedwait, (sem_t* semaphore, const timespec* time), (semaphore, time))
WATCH(int, nanosleep, (const timespec* duration, timespec* left), (duration, left))
WATCH(int, usleep, (useconds_t duration), (duration))
WATCH(unsigned, sleep, (unsigned duration), (duration))
WATCH(int, poll, (pollfd* descriptors, nfds_t count, int timeout), (descriptors, count, timeout))
WATCH(int, select, (int count, fd_set* reading, fd_set* writing, fd_set* failing, timeval* timeout), (count, reading, writing, failing, timeout))
WATCH(ssize_t, read, (int descriptor, void* bytes, std::size_t count), (descriptor, bytes, count))
WATCH(ssize_t, write, (int descriptor, const void* bytes, std::size_t count), (descriptor, bytes, count))
WATCH(ssize_t, send, (int descriptor, const void* bytes, std::size_t count, int flags), (descriptor, bytes, count, flags))
WATCH(ssize_t, recv, (int descriptor, void* bytes, std::size_t count, int flags), (descriptor, bytes, count, flags))
WATCH(std::FILE*, fopen, (const char* name, const char* mode), (name, mode))
WATCH(std::size_t, fwrite, (const void* bytes, std::size_t size, std::size_t count, std::FILE* file), (bytes, size, count, file))
WATCH(int, fputs, (const char* text, std::FILE* file), (text, file))
WATCH(int, puts, (const char* text), (text))
WATCH(int, sched_yield, (), ())
WATCH(void*, mmap, (void* place, std::size_t size, int protection, int flags, int descriptor, off_t offset), (place, size, protection, flags, descriptor, offset))
WATCH(int, munmap, (void* place, std::size_t size), (place, size))
// clang-format on
