#pragma once

#include <exception>
#include <type_traits>

namespace velotrine {

// For functions that a host calls. A host may be written in any language, so no exception may reach it.

/// The function's result, or the format's word for failure if it throws.
template <typename Function>
auto answerOr(std::invoke_result_t<Function> failure, Function&& function) -> std::invoke_result_t<Function>
{
    try {
        return function();
    } catch (const std::exception&) {
        return failure;
    }
}

/// The same where failure is false, 0 or null, or cannot be reported at all.
template <typename Function>
auto answerOrNothing(Function&& function) -> std::invoke_result_t<Function>
{
    using Answer = std::invoke_result_t<Function>;
    try {
        return function();
    } catch (const std::exception&) {
        return Answer();
    }
}

} // namespace velotrine
