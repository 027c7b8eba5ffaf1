#include "render/SoundFile.h"

namespace velotrine {

void SoundFile::add(std::span<const float> left, std::span<const float> right)
{
    const auto before = interleaved.size();
    interleaved.resize(before + 2 * left.size());
    auto* sample = interleaved.data() + before;
    for (std::size_t i = 0; i < left.size(); ++i) {
        *sample++ = left[i];
        *sample++ = right[i];
    }
    if (interleaved.size() >= pieceLength)
        write();
}

void SoundFile::finish()
{
    write();
    writer.finish();
}

void SoundFile::write()
{
    writer.write(interleaved);
    interleaved.clear();
}

} // namespace velotrine
