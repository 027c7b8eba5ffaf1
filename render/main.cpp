#include "render/CommandLine.h"

int main(int argumentCount, char** arguments)
{
    return velotrine::runCommandLine(argumentCount, arguments);
}
