// How far an import is, at the bottom of the window, and the button that ends it.
#pragma once

#include <functional>

#include <QFrame>

#include <host/window/Library.h>
#include <host/window/Texts.h>

class QLabel;
class QProgressBar;
class QPushButton;

namespace HynHost
{
class ImportBar : public QFrame
{
public:
    // `texts` outlives the bar.
    explicit ImportBar(const Texts& texts, QWidget* parent = nullptr);

    // Shows itself. `folder` is the one that is imported; the state's may lie below it. [main]
    void SetState(const QString& folder, const ImportState& state);

    std::function<void()> onCancel;

private:
    [[nodiscard]] QString TimeLeft(double seconds) const;

    const Texts& m_texts;
    QProgressBar* m_progress;
    QLabel* m_title;
    QLabel* m_count;
    QPushButton* m_cancel;
};
} // namespace HynHost
