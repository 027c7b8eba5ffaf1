#pragma once

#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace velotrine {

/// What a person has typed behind a program's name, an argument in each line of the input.
class TypedArguments
{
public:
    TypedArguments(std::string program, const std::string& input) : typed{std::move(program)}
    {
        std::istringstream lines(input);
        for (std::string line; std::getline(lines, line);)
            typed.push_back(line);
    }

    /// As main() gets them; they live as long as this.
    [[nodiscard]] std::vector<const char*> pointers() const
    {
        std::vector<const char*> all;
        all.reserve(typed.size());
        for (const auto& argument : typed)
            all.push_back(argument.c_str());
        return all;
    }

private:
    std::vector<std::string> typed;
};

} // namespace velotrine
