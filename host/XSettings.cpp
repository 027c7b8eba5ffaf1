#include "host/XSettings.h"

namespace velotrine {

namespace {

enum class Type
{
    integer = 0,
    text = 1,
    colour = 2,
};

/// Reads numbers in the byte order of whoever wrote them, and stops for good at the end.
class Reader
{
public:
    explicit Reader(std::span<const std::byte> bytes) : rest(bytes) {}

    [[nodiscard]] bool hasFailed() const noexcept { return failed; }

    void setMostSignificantFirst(bool isFirst) noexcept { mostSignificantFirst = isFirst; }

    std::span<const std::byte> take(std::size_t count)
    {
        if (count > rest.size()) {
            failed = true;
            count = rest.size();
        }
        const auto taken = rest.first(count);
        rest = rest.subspan(count);
        return taken;
    }

    std::uint32_t number(std::size_t byteCount)
    {
        std::uint32_t value = 0;
        const auto bytes = take(byteCount);
        for (std::size_t i = 0; i < bytes.size(); ++i)
            value = value << 8 |
                    std::to_integer<std::uint32_t>(bytes[mostSignificantFirst ? i : bytes.size() - 1 - i]);
        return value;
    }

    /// Texts are padded to a multiple of four bytes.
    std::string_view text(std::size_t length)
    {
        const auto bytes = take(length);
        take((4 - length % 4) % 4);
        return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
    }

private:
    std::span<const std::byte> rest;
    bool mostSignificantFirst = false;
    bool failed = false;
};

constexpr std::size_t colourBytes = 8;

} // namespace

std::optional<std::int32_t> xSettingsInteger(std::span<const std::byte> settings, std::string_view name)
{
    Reader reader(settings);
    reader.setMostSignificantFirst(reader.number(1) == 1);
    reader.take(3);   // padding
    reader.number(4); // how often the settings have changed
    const auto count = reader.number(4);
    for (std::uint32_t i = 0; i < count && !reader.hasFailed(); ++i) {
        const auto type = static_cast<Type>(reader.number(1));
        reader.take(1); // padding
        const auto found = reader.text(reader.number(2)) == name;
        reader.number(4); // when this setting has changed
        switch (type) {
        case Type::integer: {
            const auto value = static_cast<std::int32_t>(reader.number(4));
            if (found && !reader.hasFailed())
                return value;
            break;
        }
        case Type::text:
            reader.text(reader.number(4));
            break;
        case Type::colour:
            reader.take(colourBytes);
            break;
        default:
            return std::nullopt;
        }
    }
    return std::nullopt;
}

} // namespace velotrine
