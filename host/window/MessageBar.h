// What has happened or could not be done, said in the window, above the pictures: never a box that must be answered.
#pragma once

#include <functional>

#include <QTimer>
#include <QWidget>

#include <host/window/Texts.h>

class QFrame;
class QLabel;
class QPushButton;
class QToolButton;

namespace HynHost
{
class MessageBar : public QWidget
{
public:
    explicit MessageBar(const Texts& texts, QWidget* parent = nullptr);

    // [main], all of them.

    // Says that something was done; goes by itself after a while. `action` is what its button says; empty: no button.
    void Tell(const QString& text, const QString& action = {}, std::function<void()> onAction = {});
    // Says that something could not be done; stays until it is closed or something else is said.
    void TellProblem(const QString& text);

    [[nodiscard]] QString Text() const;

private:
    void Say(const QString& text, bool problem);

    QFrame* m_frame;
    QLabel* m_symbol;
    QLabel* m_text;
    QPushButton* m_action;
    QToolButton* m_close;
    QTimer m_goes;
    std::function<void()> m_onAction;
};
} // namespace HynHost
