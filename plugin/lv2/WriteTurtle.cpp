#include "plugin/lv2/TurtleFiles.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

// Writes the texts of an LV2 bundle into a folder. A part of the build.

namespace {

bool write(const std::filesystem::path& path, const std::string& text)
{
    std::ofstream file(path);
    file << text;
    file.close();
    if (!file)
        std::cerr << "velotrine_lv2_turtle: cannot write " << path << "\n";
    return static_cast<bool>(file);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: velotrine_lv2_turtle FOLDER\n";
        return 2;
    }
    const std::filesystem::path folder = argv[1];
    const auto plugin =
        velotrine::pluginTurtle(VELOTRINE_VERSION_MAJOR, VELOTRINE_VERSION_MINOR, VELOTRINE_VERSION_PATCH);
    const auto isWritten = write(folder / "manifest.ttl", velotrine::manifestTurtle()) &&
                           write(folder / "velotrine.ttl", plugin) &&
                           write(folder / "presets.ttl", velotrine::presetsTurtle());
    return isWritten ? 0 : 1;
}
