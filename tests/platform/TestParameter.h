#pragma once

#include "platform/AUParameter.h"

#include <string>
#include <utility>

namespace velotrine {

/// A definition of which only address, identifier and range matter.
inline AUParameterDefinition definedAs(AUParameterAddress address, std::string identifier = {},
                                       AUValue minValue = 0.0f, AUValue maxValue = 1.0f)
{
    AUParameterDefinition definition;
    definition.address = address;
    definition.identifier = std::move(identifier);
    definition.minValue = minValue;
    definition.maxValue = maxValue;
    return definition;
}

} // namespace velotrine
