// The top of the window: what to look for, how much of everything that is, and the buttons for what concerns all of it.
#pragma once

#include <functional>
#include <optional>

#include <QTimer>
#include <QWidget>

#include <host/window/DayButton.h>
#include <host/window/MediaIndex.h>
#include <host/window/StarRating.h>
#include <host/window/Texts.h>

class QButtonGroup;
class QFrame;
class QLabel;
class QLineEdit;
class QPushButton;

namespace HynHost
{
class SearchBar : public QWidget
{
public:
    // `texts` outlives the bar.
    explicit SearchBar(const Texts& texts, QWidget* parent = nullptr);

    // [main], all of them.

    [[nodiscard]] MediaQuery Query() const;
    // Looks for everything again, and says so by onQuery when that changes anything.
    void Clear();
    // What there is nothing to search with is hidden where there is nothing to search.
    void SetCounts(std::size_t found, std::size_t all);
    void FocusText();

    [[nodiscard]] bool IsFilterShown() const;
    void ShowFilter(bool shown);

    std::function<void(const MediaQuery&)> onQuery; // only when it changes
    std::function<void()> onAdd;
    std::function<void(QPoint)> onMore; // on the desktop, where a menu may hang
    std::function<void()> onLeave;      // the user goes on to the pictures

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QFrame* MakeTop();
    QFrame* MakeFilter();
    void Changed();

    const Texts& m_texts;
    QFrame* m_top;
    QLineEdit* m_text;
    QToolButton* m_filterButton;
    QLabel* m_counts;
    QPushButton* m_add;
    QFrame* m_filter;
    QButtonGroup* m_kinds;
    DayButton* m_from;
    DayButton* m_to;
    QLabel* m_least;
    StarRating* m_stars;
    QPushButton* m_clear;
    QTimer m_typed;
    MediaQuery m_told;
};
} // namespace HynHost
