// A button for a day or none: shows what is chosen, and a calendar when it is pressed.
#pragma once

#include <cstdint>
#include <functional>

#include <QToolButton>

#include <host/window/Texts.h>

namespace HynHost
{
class DayButton : public QToolButton
{
public:
    // `name` is what it says while no day is chosen. `texts` outlives the button.
    DayButton(const Texts& texts, const QString& name, QWidget* parent = nullptr);

    // Packed as MediaItem::day; 0: none. SetDay makes no call of onDay. [main]
    [[nodiscard]] std::uint32_t Day() const noexcept { return m_day; }
    void SetDay(std::uint32_t day);

    std::function<void()> onDay;

private:
    void ShowCalendar();

    const Texts& m_texts;
    QString m_name;
    std::uint32_t m_day = 0;
};
} // namespace HynHost
