#include "takes/TakeLog.h"

#include "takes/TakeAssembler.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <fstream>
#include <iterator>
#include <span>
#include <string>
#include <system_error>
#include <type_traits>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace velotrine {

namespace {

namespace fs = std::filesystem;

static_assert(std::is_trivially_copyable_v<TakeRecord>);

/// Changes with the form of a record.
constexpr std::array<char, 16> fileHeader{"velotrine takes"};

constexpr auto lockName = "running";

/// Opens a folder's lock, and takes it if no running program has it; below 0 if one has.
int lockFolder(const fs::path& folder)
{
    const int descriptor = open((folder / lockName).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor >= 0 && flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        close(descriptor);
        return -1;
    }
    return descriptor;
}

bool makesSense(const TakeRecord& record, std::int64_t frameBefore)
{
    using Kind = TakeRecord::Kind;
    const auto isKnown = record.kind <= Kind::end && record.target <= TakeTarget::end;
    const auto isNumber = record.kind == Kind::generator || std::isfinite(record.value());
    return isKnown && isNumber && (record.kind == Kind::begin || record.frame >= frameBefore);
}

/// The take in a file, as far as it can be read: the program was killed while it wrote.
std::optional<Take> takeFrom(const fs::path& path)
{
    std::ifstream stream(path, std::ios::binary);
    std::array<char, fileHeader.size()> header{};
    if (!stream.read(header.data(), header.size()) || header != fileHeader)
        return std::nullopt;
    TakeAssembler assembler;
    TakeRecord record{};
    std::int64_t frame = 0;
    while (stream.read(reinterpret_cast<char*>(&record), sizeof record) && makesSense(record, frame)) {
        frame = record.frame;
        assembler.add(record);
    }
    auto finished = assembler.finishedTakes();
    return finished.empty() ? assembler.takeSoFar() : std::optional(std::move(finished.back()));
}

std::vector<fs::path> entriesOf(const fs::path& folder)
{
    std::error_code error;
    std::vector<fs::path> entries;
    for (auto entry = fs::directory_iterator(folder, error); !error && entry != fs::directory_iterator();
         entry.increment(error))
        entries.push_back(entry->path());
    std::ranges::sort(entries);
    return entries;
}

} // namespace

TakeLog::TakeLog(fs::path folder) : common(std::move(folder))
{
    std::error_code error;
    fs::create_directories(common, error);
    // Names sort by age. A process number may come again; a folder of that name has been left behind.
    for (int attempt = 0; attempt < 100 && lock < 0; ++attempt) {
        const auto seconds =
            std::chrono::system_clock::now().time_since_epoch() / std::chrono::milliseconds(1);
        own = common / (std::to_string(seconds + attempt) + "-" + std::to_string(getpid()));
        if (fs::create_directory(own, error))
            lock = lockFolder(own);
    }
}

TakeLog::~TakeLog()
{
    closeFile();
    std::error_code error;
    if (lock >= 0)
        fs::remove_all(own, error);
    if (lock >= 0)
        close(lock);
    for (const auto& [folder, descriptor] : orphans)
        close(descriptor);
}

void TakeLog::add(const TakeRecord& record)
{
    if (record.kind == TakeRecord::Kind::begin)
        beginFile();
    const auto bytes = std::as_bytes(std::span(&record, 1));
    unwritten.insert(unwritten.end(), bytes.begin(), bytes.end());
}

void TakeLog::flush()
{
    // A disk that is full leaves part of a record, and all that follows would be read wrong.
    if (current >= 0 && !unwritten.empty() &&
        write(current, unwritten.data(), unwritten.size()) != static_cast<ssize_t>(unwritten.size()))
        closeFile();
    unwritten.clear();
}

fs::path TakeLog::file(int number) const
{
    constexpr std::size_t digits = 6; // so that names sort by age
    const auto text = std::to_string(number);
    return own / (std::string(digits - std::min(digits, text.size()), '0') + text + ".records");
}

void TakeLog::beginFile()
{
    flush();
    closeFile();
    constexpr int filesKept = 2;
    std::error_code error;
    fs::remove(file(filesBegun - filesKept), error);
    if (lock < 0)
        return;
    current = open(file(filesBegun).c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    ++filesBegun;
    const auto header = std::as_bytes(std::span(fileHeader));
    unwritten.assign(header.begin(), header.end());
}

void TakeLog::closeFile()
{
    if (current >= 0)
        close(std::exchange(current, -1));
}

std::vector<Take> TakeLog::leftBehind()
{
    std::vector<Take> takes;
    for (const auto& folder : entriesOf(common)) {
        const int descriptor = folder == own ? -1 : lockFolder(folder);
        if (descriptor < 0)
            continue;
        const auto before = takes.size();
        for (const auto& path : entriesOf(folder))
            if (auto take = path.extension() == ".records" ? takeFrom(path) : std::nullopt)
                takes.push_back(std::move(*take));
        orphans.emplace_back(folder, descriptor);
        if (takes.size() == before)
            forget(orphans.back());
    }
    std::erase_if(orphans, [](const auto& orphan) { return orphan.second < 0; });
    return takes;
}

void TakeLog::forgetLeftBehind()
{
    for (auto& orphan : std::exchange(orphans, {}))
        forget(orphan);
}

void TakeLog::forget(Orphan& orphan)
{
    std::error_code error;
    fs::remove_all(orphan.first, error);
    close(std::exchange(orphan.second, -1));
}

} // namespace velotrine
