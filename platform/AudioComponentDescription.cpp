#include "platform/AudioComponentDescription.h"

namespace velotrine {

std::uint32_t fourCharCode(std::string_view text) noexcept
{
    std::uint32_t code = 0;
    for (const char character : text.substr(0, 4))
        code = code * 256 + static_cast<unsigned char>(character);
    return code;
}

} // namespace velotrine
