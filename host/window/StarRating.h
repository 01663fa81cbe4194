// Five stars to click, or to set with the arrow keys and digits: a slider from 0 to 5 to the toolkit and to screen
// readers (no name of its own, so that they take it for one).
#pragma once

#include <functional>

#include <QAbstractSlider>

namespace HynHost
{
class StarRating : public QAbstractSlider
{
public:
    explicit StarRating(const QString& name, QWidget* parent = nullptr);

    // Shows it without a call of onRated. [main]
    void SetStars(int stars);

    // The user has chosen so many; clicking the last star that is lit takes all away. [main]
    std::function<void(int)> onRated;

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    [[nodiscard]] int StarAt(double x) const;
    void Choose(int stars);

    int m_hovered = 0;
};
} // namespace HynHost
