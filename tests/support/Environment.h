// Variables of the environment, as they were again at the end of the scope.
#pragma once

#include <cstdlib>
#include <map>
#include <optional>
#include <string>

namespace HalyonTest
{
class Environment
{
public:
    // Null takes a variable away.
    void Set(const std::string& name, const char* value)
    {
        const char* before = std::getenv(name.c_str());
        m_before.try_emplace(name, before != nullptr ? std::optional<std::string>(before) : std::nullopt);
        Put(name, value);
    }
    Environment() = default;
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;
    ~Environment()
    {
        for (const auto& [name, value] : m_before)
            Put(name, value ? value->c_str() : nullptr);
    }

private:
    static void Put(const std::string& name, const char* value)
    {
        if (value != nullptr)
            setenv(name.c_str(), value, 1);
        else
            unsetenv(name.c_str());
    }

    std::map<std::string, std::optional<std::string>> m_before;
};
} // namespace HalyonTest
