#include "host/HostOptions.h"
#include "packaging/WriteTexts.h"

int main(int argumentCount, char** arguments)
{
    using namespace velotrine;
    return writeTexts(argumentCount, arguments, hostDescription(),
                      {.summary = "a musical instrument that plays itself, in a window of its own",
                       .introduction = "Opens the instrument's window and plays on an audio device.",
                       .tables = {},
                       .date = {},
                       .seeAlso = {"velotrine"}});
}
