// The months that have pictures, the latest at the top, each with a bar for how many: click, drag or press a key to go
// there. A slider to the toolkit and to screen readers (no name of its own, so that they take it for one).
#pragma once

#include <functional>
#include <memory>

#include <QAbstractSlider>

#include <host/window/MediaIndex.h>
#include <host/window/Texts.h>

namespace HynHost
{
class YearBar : public QAbstractSlider
{
public:
    // `texts` outlives the bar.
    explicit YearBar(const Texts& texts, QWidget* parent = nullptr);

    // [main], all of them.

    void SetIndex(std::shared_ptr<const MediaIndex> index);
    // Marks the month that is in sight (year * 100 + month), without a call of onMonth.
    void SetMonth(std::uint32_t month);

    std::function<void(std::uint32_t)> onMonth;

    [[nodiscard]] QSize sizeHint() const override;

    // The middle of a month's bar; the index counts from the latest.
    [[nodiscard]] QPoint PlaceOf(int month) const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    [[nodiscard]] int Count() const { return static_cast<int>(m_index->Months().size()); }
    [[nodiscard]] double Pitch() const;
    [[nodiscard]] double TopOf(int month) const;
    [[nodiscard]] int MonthAt(double y) const;
    void GoTo(int month);
    void Say(int month, QPoint where);
    void PaintBars(QPainter& painter) const;
    void PaintYears(QPainter& painter) const;

    const Texts& m_texts;
    std::shared_ptr<const MediaIndex> m_index = std::make_shared<const MediaIndex>();
    std::size_t m_most = 1; // pictures of a month
    int m_hovered = -1;
};
} // namespace HynHost
