#include "takes/Take.h"

#include "audiounit/Parameters.h"

#include <algorithm>

namespace velotrine {

TakeStart::TakeStart()
{
    std::ranges::transform(parameterTable(), values.begin(), &ParameterInfo::initialValue);
}

} // namespace velotrine
