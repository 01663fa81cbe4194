// The outcomes of a run, for people and for programs.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include <validate/Check.h>

namespace HynValidate
{
using Report = std::vector<std::pair<const Check*, Outcome>>;

[[nodiscard]] bool HasPassed(const Report& report);
// "ok", "failed", "skipped"
[[nodiscard]] const char* ResultName(Result result);
// A line for each check, then one with the counts.
[[nodiscard]] std::string AsText(const Report& report);
// {"module", "passed", "checks": [{"name", "rule", "result", "reason", "seconds"}]}
[[nodiscard]] std::string AsJson(const Report& report, const std::string& module);
// A line for each check: its name and its rule.
[[nodiscard]] std::string ListOfChecks();
} // namespace HynValidate
