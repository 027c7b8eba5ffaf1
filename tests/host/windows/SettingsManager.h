#pragma once

#include <cstddef>
#include <memory>
#include <span>

namespace velotrine {

/// What a desktop runs to tell programs its settings; here, a test's settings, while this lives.
class SettingsManager
{
public:
    explicit SettingsManager(std::span<const std::byte> settings);
    ~SettingsManager();
    SettingsManager(const SettingsManager&) = delete;
    SettingsManager& operator=(const SettingsManager&) = delete;

private:
    struct Connection;

    std::unique_ptr<Connection> connection;
};

} // namespace velotrine
