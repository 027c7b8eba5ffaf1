#include "tests/render/Terminal.h"

#include <array>
#include <cstdlib>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace velotrine {

Terminal::Terminal() : screenSide(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC))
{
    const bool isReady = screenSide >= 0 && ::grantpt(screenSide) == 0 && ::unlockpt(screenSide) == 0;
    if (isReady)
        programSide = ::open(::ptsname(screenSide), O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (programSide < 0)
        throw std::runtime_error("no terminal could be made");
}

Terminal::~Terminal()
{
    ::close(programSide);
    ::close(screenSide);
}

std::string Terminal::read() const
{
    std::string text;
    std::array<char, 4096> chunk{};
    for (pollfd waiting{screenSide, POLLIN, 0}; ::poll(&waiting, 1, 0) == 1;) {
        const auto count = ::read(screenSide, chunk.data(), chunk.size());
        if (count <= 0)
            break;
        text.append(chunk.data(), static_cast<std::size_t>(count));
    }
    return text;
}

} // namespace velotrine
