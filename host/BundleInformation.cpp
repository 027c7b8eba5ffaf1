#include "host/BundleInformation.h"

#include "audiounit/Identity.h"

namespace velotrine {

BundleInformation mainBundleInformation()
{
    return {.shortVersion = identity::version, .buildNumber = VELOTRINE_BUILD_NUMBER};
}

std::string versionLine(const BundleInformation& information)
{
    std::string line = "v";
    line.append(information.shortVersion.value_or("?"));
    line.append(" (");
    line.append(information.buildNumber.value_or("?"));
    line.append(")");
    return line;
}

} // namespace velotrine
