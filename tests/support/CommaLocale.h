#pragma once

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <locale>
#include <stdexcept>
#include <string>

namespace velotrine {

/// While one lives, the process writes numbers with a comma, as a host does that has set its user's locale.
/// It fails by throwing.
class CommaLocale
{
public:
    CommaLocale()
    {
        auto pattern = (std::filesystem::temp_directory_path() / "velotrine-locale-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr)
            throw std::runtime_error("no folder for the locale");
        folder = pattern;
        const auto command = "localedef -f UTF-8 -i de_DE " + (folder / name).string();
        if (std::system(command.c_str()) != 0)
            throw std::runtime_error("no locale from " + command);
        setenv("LOCPATH", folder.c_str(), 1);
        std::locale::global(std::locale(name)); // C's locale as well
        if (std::snprintf(nullptr, 0, "%.1f", 0.5) != 3 || *std::localeconv()->decimal_point != ',')
            throw std::runtime_error("the locale has no comma");
    }

    ~CommaLocale()
    {
        std::locale::global(std::locale::classic());
        unsetenv("LOCPATH");
        std::filesystem::remove_all(folder);
    }

    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

private:
    static constexpr auto name = "de_DE.UTF-8";

    std::filesystem::path folder;
};

} // namespace velotrine
