#pragma once

#include <nlohmann/json.hpp>

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

// What all documents from outside go through. The library's header is slow to compile, so only sources
// include this.

namespace velotrine {

/// A text that is not what it should be; the message is a sentence that says why, and where.
struct JsonRefusal : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// Throws JsonRefusal unless the text is JSON of at most so many MiB.
/// @param callback  sees each part as it is read, and can refuse it or drop it
[[nodiscard]] nlohmann::json parseJson(std::string_view text, std::size_t maxMebibytes,
                                       const nlohmann::json::parser_callback_t& callback = nullptr);

/// The beginning of a text that a message quotes, in whole characters; a document holds texts of any length.
[[nodiscard]] std::string excerpt(std::string_view text, std::size_t longest);

} // namespace velotrine
