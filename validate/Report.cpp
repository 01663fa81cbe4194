#include <validate/Report.h>

#include <algorithm>

#include <nlohmann/json.hpp>

namespace HynValidate
{
namespace
{
constexpr std::size_t kNameWidth = 23;
constexpr std::size_t kResultWidth = 9;

std::string Padded(std::string text, std::size_t width)
{
    text.resize(std::max(width, text.size() + 1), ' ');
    return text;
}
} // namespace

bool HasPassed(const Report& report)
{
    return std::none_of(report.begin(), report.end(),
                        [](const auto& line) { return line.second.result == Result::Failed; });
}

const char* ResultName(Result result)
{
    if (result == Result::Skipped)
        return "skipped";
    return result == Result::Ok ? "ok" : "failed";
}

std::string AsText(const Report& report)
{
    std::string text;
    int counts[3] = {};
    for (const auto& [check, outcome] : report)
    {
        ++counts[static_cast<int>(outcome.result)];
        text += Padded(check->name, kNameWidth);
        const std::string result = ResultName(outcome.result);
        text += outcome.reason.empty() ? result : Padded(result, kResultWidth) + outcome.reason;
        text += "\n";
    }
    return text + std::to_string(report.size()) + " checks: " + std::to_string(counts[0]) + " ok, " +
           std::to_string(counts[1]) + " failed, " + std::to_string(counts[2]) + " skipped\n";
}

std::string AsJson(const Report& report, const std::string& module)
{
    nlohmann::ordered_json json{{"module", module}, {"passed", HasPassed(report)}};
    json["checks"] = nlohmann::ordered_json::array();
    for (const auto& [check, outcome] : report)
        json["checks"].push_back({{"name", check->name},
                                  {"rule", check->rule},
                                  {"result", ResultName(outcome.result)},
                                  {"reason", outcome.reason},
                                  {"seconds", outcome.seconds}});
    // Reasons may hold what the module wrote, which need not be text.
    return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

std::string ListOfChecks()
{
    std::string text;
    for (const Check& check : Checks())
        text += Padded(check.name, kNameWidth) + check.rule + "\n";
    return text;
}
} // namespace HynValidate
