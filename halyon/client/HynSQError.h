// The exception of the client's throwing forms.
//
// Not there in sources that are compiled without exceptions.
#pragma once

#include <halyon/client/HynSQForms.h>

#if defined(__cpp_exceptions)
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include <halyon/framework/HynResult.h>

namespace Halyon::Client
{
inline namespace HALYON_CLIENT_FORMS
{
// A call that failed.
class Error : public std::runtime_error
{
public:
    // `action` is what failed ("preparing", "binding parameter 2"); `subject` the SQL text as UTF-8, or the file.
    Error(HynResult code, std::string action, std::string subject)
        : std::runtime_error(action + " failed with " + HynResultName(code) + (subject.empty() ? "" : ": ") + subject),
          m_code(code), m_action(std::move(action)), m_subject(std::move(subject))
    {
    }

    [[nodiscard]] HynResult code() const noexcept { return m_code; }
    [[nodiscard]] const std::string& action() const noexcept { return m_action; }
    [[nodiscard]] const std::string& sql() const noexcept { return m_subject; }

private:
    HynResult m_code;
    std::string m_action;
    std::string m_subject;
};
} // namespace HALYON_CLIENT_FORMS
} // namespace Halyon::Client
#endif
