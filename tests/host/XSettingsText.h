#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <vector>

namespace velotrine {

/// Settings as a desktop's settings manager would publish them.
class XSettingsText
{
public:
    enum class ByteOrder
    {
        leastFirst = 0,
        mostFirst = 1,
    };

    explicit XSettingsText(ByteOrder byteOrder = ByteOrder::leastFirst) : order(byteOrder) {}

    XSettingsText& integer(std::string_view name, std::int32_t value)
    {
        begin(0, name);
        append(entries, static_cast<std::uint32_t>(value), 4);
        return *this;
    }

    XSettingsText& text(std::string_view name, std::string_view value)
    {
        begin(1, name);
        append(entries, static_cast<std::uint32_t>(value.size()), 4);
        appendPadded(value);
        return *this;
    }

    XSettingsText& colour(std::string_view name)
    {
        begin(2, name);
        for (int channel = 0; channel < 4; ++channel)
            append(entries, 0xffff, 2);
        return *this;
    }

    /// A setting of an unknown type.
    XSettingsText& unknown(std::string_view name)
    {
        begin(9, name);
        return *this;
    }

    [[nodiscard]] std::vector<std::byte> bytes() const
    {
        std::vector<std::byte> all{static_cast<std::byte>(order), {}, {}, {}};
        append(all, serial, 4);
        append(all, count, 4);
        all.insert(all.end(), entries.begin(), entries.end());
        return all;
    }

private:
    static constexpr std::uint32_t serial = 7;

    void begin(unsigned type, std::string_view name)
    {
        ++count;
        entries.push_back(static_cast<std::byte>(type));
        entries.push_back({});
        append(entries, static_cast<std::uint32_t>(name.size()), 2);
        appendPadded(name);
        append(entries, serial, 4);
    }

    void append(std::vector<std::byte>& to, std::uint32_t number, unsigned byteCount) const
    {
        for (unsigned i = 0; i < byteCount; ++i) {
            const auto place = order == ByteOrder::mostFirst ? byteCount - 1 - i : i;
            to.push_back(static_cast<std::byte>(number >> 8 * place & 0xff));
        }
    }

    void appendPadded(std::string_view characters)
    {
        for (const auto character : characters)
            entries.push_back(static_cast<std::byte>(character));
        while (entries.size() % 4 != 0)
            entries.push_back({});
    }

    ByteOrder order;
    std::uint32_t count = 0;
    std::vector<std::byte> entries;
};

} // namespace velotrine
