#pragma once

#include "takes/RecordBuffer.h"
#include "takes/Take.h"

#include <cstddef>
#include <filesystem>
#include <utility>
#include <vector>

namespace velotrine {

/// What a running program has noted of its takes, in files that survive it: should it be killed, the next one
/// finds them. Each program has a folder of its own in a common one, and holds a lock in it as long as it
/// lives; on an orderly end the folder goes away.
///
/// A file holds one take; the newest two are kept, so a program's files come to 48 MB at most. Where nothing
/// can be written, nothing is, and nobody is told: the instrument plays on. One thread, not the render
/// thread.
class TakeLog
{
public:
    /// @param folder  the common one; made if it is not there
    explicit TakeLog(std::filesystem::path folder);
    ~TakeLog();
    TakeLog(const TakeLog&) = delete;
    TakeLog& operator=(const TakeLog&) = delete;

    void add(const TakeRecord& record);

    /// Hands what was added to the system, from where it reaches the disk however this program ends.
    void flush();

    /// The takes that programs left behind which were killed, oldest first; each is handed out once, to the
    /// first that asks. Those of programs that still run are not touched.
    [[nodiscard]] std::vector<Take> leftBehind();

    /// The takes that were left behind are kept elsewhere, or not wanted.
    void forgetLeftBehind();

private:
    /// The folder of a program that is gone, and its lock, which is held until nobody needs what is in it.
    using Orphan = std::pair<std::filesystem::path, int>;

    static void forget(Orphan& orphan);

    void beginFile();
    void closeFile();
    [[nodiscard]] std::filesystem::path file(int number) const;

    std::filesystem::path common;
    std::filesystem::path own;
    int lock = -1; ///< of the own folder
    int current = -1;
    int filesBegun = 0;
    std::vector<std::byte> unwritten;

    std::vector<Orphan> orphans;
};

} // namespace velotrine
