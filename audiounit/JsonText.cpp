#include "audiounit/JsonText.h"

#include <algorithm>

namespace velotrine {

namespace {

/// "[json.exception.parse_error.101] parse error at line 1, column 2: ...": only the part for people. It
/// quotes the document, valid UTF-8 or not.
std::string readableMessage(const nlohmann::json::exception& error)
{
    constexpr std::size_t longest = 200;
    std::string message = error.what();
    const auto bracket = message.find("] ");
    if (bracket != std::string::npos)
        message.erase(0, bracket + 2);
    std::ranges::replace_if(
        message, [](char byte) { return static_cast<unsigned char>(byte) > 0x7F; }, '?');
    return excerpt(message, longest);
}

/// The parser would take a zero byte for the end of the text, and not see what follows.
void refuseZeroBytes(std::string_view text)
{
    const auto position = text.find('\0');
    if (position == std::string_view::npos)
        return;
    const auto before = text.substr(0, position);
    const auto line = std::ranges::count(before, '\n') + 1;
    const auto lineStart = before.rfind('\n') + 1; // npos + 1 is 0: the first line starts the text
    throw JsonRefusal("it is not valid JSON: there is a zero byte at line " + std::to_string(line) +
                      ", column " + std::to_string(position - lineStart + 1));
}

} // namespace

nlohmann::json parseJson(std::string_view text, std::size_t maxMebibytes,
                         const nlohmann::json::parser_callback_t& callback)
{
    if (text.size() > maxMebibytes << 20)
        throw JsonRefusal("it is larger than " + std::to_string(maxMebibytes) + " MiB");
    refuseZeroBytes(text);
    try {
        return nlohmann::json::parse(text, callback);
    } catch (const nlohmann::json::exception& error) {
        throw JsonRefusal("it is not valid JSON: " + readableMessage(error));
    }
}

std::string excerpt(std::string_view text, std::size_t longest)
{
    if (text.size() <= longest)
        return std::string(text);
    const auto continuesCharacter = [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
    };
    auto end = longest;
    while (end > 0 && continuesCharacter(text[end]))
        --end;
    return std::string(text.substr(0, end)) + "...";
}

} // namespace velotrine
