#pragma once

#include <cstdio>
#include <string>
#include <utility>

namespace velotrine {

/// What tests/render-thread-watch has written down in a program.
struct RenderThreadLog
{
    explicit RenderThreadLog(std::string written) : text(std::move(written))
    {
        const auto numbers = text.rfind("render calls: ");
        if (numbers != std::string::npos)
            std::sscanf(text.c_str() + numbers, "render calls: %ld, findings: %ld", &calls, &findings);
    }

    std::string text; ///< what was found, with stacks, then the numbers below
    long calls = 0;
    long findings = -1; ///< still that where nothing was watched
};

} // namespace velotrine
