#include "plugin/lv2/TurtleTemplate.h"

#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

// Writes the texts of an LV2 bundle: TEMPLATE NAME.ttl.in becomes FOLDER/NAME.ttl. A part of the build.

namespace {

void fillIn(const std::filesystem::path& from, const std::filesystem::path& to)
{
    std::ifstream in;
    std::ofstream out;
    in.exceptions(std::ios::failbit | std::ios::badbit);
    out.exceptions(std::ios::failbit | std::ios::badbit);
    in.open(from);
    out.open(to);
    std::ostringstream turtleTemplate;
    turtleTemplate << in.rdbuf();
    out << velotrine::filledIn(turtleTemplate.str());
    out.close();
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 3) {
        std::cerr << "usage: velotrine_lv2_turtle FOLDER TEMPLATE...\n";
        return 2;
    }
    const std::filesystem::path folder = argv[1];
    for (int i = 2; i < argc; ++i) {
        const std::filesystem::path from = argv[i];
        try {
            fillIn(from, folder / from.stem());
        } catch (const std::exception& error) {
            std::cerr << "velotrine_lv2_turtle: " << from << ": " << error.what() << "\n";
            return 1;
        }
    }
    return 0;
}
