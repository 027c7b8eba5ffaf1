#pragma once

#include "engine/SimdTarget.h"

#include <gtest/gtest.h>

namespace velotrine::test {

/// Calls the check with every instruction set that this machine can run forced in turn, and gives the engine
/// its own choice back.
template <typename Check>
void onEachSimdTarget(Check&& check)
{
    const auto& targets = availableSimdTargets();
    ASSERT_FALSE(targets.empty());
    for (const auto& target : targets) {
        SCOPED_TRACE(target.name);
        forceSimdTarget(target);
        check();
    }
    forceSimdTarget(targets.front());
}

} // namespace velotrine::test
