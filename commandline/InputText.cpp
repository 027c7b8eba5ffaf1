#include "commandline/InputText.h"

#include <algorithm>

namespace velotrine {

std::optional<std::string> textUpTo(std::size_t mostBytes, std::istream& input)
{
    // What may be large seldom is.
    constexpr std::size_t pieceBytes = std::size_t{1} << 16;
    if (!input)
        return std::nullopt;
    std::string text;
    while (input && text.size() <= mostBytes) {
        const auto before = text.size();
        const auto wanted = std::min(pieceBytes, mostBytes + 1 - before);
        text.resize(before + wanted);
        input.read(text.data() + before, static_cast<std::streamsize>(wanted));
        text.resize(before + static_cast<std::size_t>(input.gcount()));
    }
    if (input.bad())
        return std::nullopt;
    return text;
}

} // namespace velotrine
