// What stands in the place of the pictures when there are none: a drawing, a sentence, and the one thing to do now.
#pragma once

#include <functional>

#include <QWidget>

#include <host/window/Texts.h>

class QLabel;
class QPushButton;

namespace HynHost
{
class EmptyState : public QWidget
{
public:
    explicit EmptyState(QWidget* parent = nullptr);

    enum class Drawing
    {
        Pictures, // nothing was imported yet
        Search,   // nothing was found
        Trouble,  // the catalogue cannot be used
    };

    // [main]
    void Set(Drawing drawing, const QString& title, const QString& sentence, const QString& button,
             std::function<void()> onButton);
    void FocusButton();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Drawing m_drawing = Drawing::Pictures;
    QWidget* m_room; // where the drawing is made
    QLabel* m_title;
    QLabel* m_sentence;
    QPushButton* m_button;
    std::function<void()> m_onButton;
};
} // namespace HynHost
