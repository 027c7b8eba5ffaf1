#pragma once

#include "plugin/InstrumentHost.h"

#include <string>
#include <vector>

namespace velotrine {

/// A music host that records what it is told: "begin 3", "3 = 0.25", "end 3", "state".
class RecordingHost final : public InstrumentHost
{
public:
    void beginGesture(ParameterAddress address) override
    {
        told.push_back("begin " + std::to_string(address));
    }

    void valueChanged(ParameterAddress address, float value) override
    {
        auto text = std::to_string(value);
        text.erase(text.find_last_not_of('0') + 1);
        told.push_back(std::to_string(address) + " = " + text);
    }

    void endGesture(ParameterAddress address) override { told.push_back("end " + std::to_string(address)); }

    void stateChanged() override { told.emplace_back("state"); }

    std::vector<std::string> told;
};

} // namespace velotrine
