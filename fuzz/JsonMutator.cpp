// For fuzzers of texts in JSON: changes one value of a document that can be read, or leaves it out, so that
// what comes out can be read as well. What cannot be read, and one in four of the others, is changed byte by
// byte.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace {

using Json = nlohmann::ordered_json;
using Random = std::minstd_rand;

std::size_t below(std::size_t limit, Random& random)
{
    return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random);
}

/// All values within a document, itself in front.
void collect(Json& value, std::vector<Json*>& found)
{
    found.push_back(&value);
    for (auto& member : value)
        if (value.is_structured())
            collect(member, found);
}

double anyNumber(Random& random)
{
    constexpr std::array<double, 4> edges{0.0, 1.0, 40.0, 300.0};
    const double edge = edges[below(edges.size(), random)];
    const double scale = std::pow(10.0, std::uniform_real_distribution(-3.0, 39.0)(random));
    return edge + std::uniform_real_distribution(-1.0, 1.0)(random) * scale;
}

Json anyValue(const Json& before, Random& random)
{
    switch (below(8, random)) {
    case 0:
        return nullptr;
    case 1:
        return !before.is_boolean() || !before.get<bool>();
    case 2:
        return std::string(below(100, random), 'x');
    case 3:
        return static_cast<std::int64_t>(anyNumber(random) / 1.0e21);
    default:
        return anyNumber(random);
    }
}

void mutate(Json& document, Random& random)
{
    std::vector<Json*> values;
    collect(document, values);
    auto& value = *values[below(values.size(), random)];
    if (value.is_structured() && !value.empty() && below(2, random) == 0)
        value.erase(std::next(value.begin(), static_cast<std::ptrdiff_t>(below(value.size(), random))));
    else if (value.is_array() && !value.empty())
        value.push_back(value[below(value.size(), random)]);
    else if (!value.is_structured())
        value = anyValue(value, random);
}

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned seed)
{
    Random random(seed);
    auto document = Json::parse(data, data + size, nullptr, false);
    if (document.is_discarded() || below(4, random) == 0)
        return LLVMFuzzerMutate(data, size, maxSize);
    for (std::size_t changes = 1 + below(3, random); changes > 0; --changes)
        mutate(document, random);
    const auto text = document.dump(-1, ' ', false, Json::error_handler_t::replace);
    if (text.size() > maxSize)
        return LLVMFuzzerMutate(data, size, maxSize);
    std::ranges::copy(text, data);
    return text.size();
}
