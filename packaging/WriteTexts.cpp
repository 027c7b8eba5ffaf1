#include "packaging/WriteTexts.h"

#include "packaging/Completions.h"

#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <utility>

namespace velotrine {

namespace {

void write(const std::filesystem::path& path, const std::string& text)
{
    std::ofstream file;
    file.exceptions(std::ios::failbit | std::ios::badbit);
    file.open(path);
    file << text;
    file.close();
}

} // namespace

int writeTexts(int argumentCount, const char* const* arguments, const ProgramDescription& program,
               ManPageFrame frame)
{
    if (argumentCount != 3) {
        std::cerr << "usage: " << arguments[0] << " FOLDER DATE\n";
        return 2;
    }
    const std::filesystem::path folder = arguments[1];
    frame.date = arguments[2];
    const auto& name = program.program.name;
    try {
        write(folder / (name + ".1"), manPage(program, frame));
        write(folder / (name + ".bash"), bashCompletion(program));
        write(folder / ("_" + name), zshCompletion(program));
        write(folder / (name + ".fish"), fishCompletion(program));
    } catch (const std::exception& error) {
        std::cerr << arguments[0] << ": " << folder << ": " << error.what() << "\n";
        return 1;
    }
    return 0;
}

} // namespace velotrine
