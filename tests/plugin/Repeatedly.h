#pragma once

#include <functional>
#include <stop_token>
#include <thread>
#include <utility>

namespace velotrine {

/// Does something again and again on a thread of its own, as long as this lives.
class Repeatedly
{
public:
    explicit Repeatedly(std::function<void()> step)
        : thread([doStep = std::move(step)](const std::stop_token& stop) {
              while (!stop.stop_requested())
                  doStep();
          })
    {}

private:
    std::jthread thread;
};

} // namespace velotrine
