#pragma once

#include <exception>
#include <type_traits>

namespace velotrine {

// For what a host calls: nothing may be thrown at it, for it may be written in anything.

/// What the function answers, or the format's word for failure if it throws.
template <typename Function>
auto answerOr(std::invoke_result_t<Function> failure, Function&& function) -> std::invoke_result_t<Function>
{
    try {
        return function();
    } catch (const std::exception&) {
        return failure;
    }
}

/// The same where failure is false, 0, null, or not told at all.
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
