#include "packaging/WriteTexts.h"
#include "render/CommandLine.h"
#include "render/Listing.h"

int main(int argumentCount, char** arguments)
{
    using namespace velotrine;
    return writeTexts(argumentCount, arguments, commandLineDescription(),
                      {.summary = "a musical instrument that plays itself, rendered to files",
                       .introduction =
                           "Renders what the instrument plays to sound and MIDI files, faster than it is "
                           "heard. The same command line gives the same music.",
                       .tables = {{"PRESETS", presetListing(false)}, {"PARAMETERS", parameterListing(false)}},
                       .date = {},
                       .seeAlso = {"velotrine-app"}});
}
