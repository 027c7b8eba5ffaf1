#pragma once

#include "takes/Take.h"

#include <functional>
#include <string>

namespace velotrine {

/// Writes a take, and beside it what it sounds like at its own rate, bit for bit (a WAV of 32-bit floats),
/// and its notes (a MIDI file). The take comes first: should the disk be full then, the others can be made of
/// it later. Throws UsageError or WorkError. Any thread, one at a time.
/// @param path      of the files, without their endings; none of them is there
/// @param progress  told how much is done, 0 to 1
void writeTakeFiles(const Take& take, const std::string& path, const std::function<void(double)>& progress);

} // namespace velotrine
