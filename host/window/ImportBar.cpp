#include <host/window/ImportBar.h>

#include <cmath>

#include <QDir>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>

#include <host/window/Style.h>

namespace HynHost
{
namespace
{
constexpr int kSteps = 1000;
constexpr double kMinute = 60;
} // namespace

ImportBar::ImportBar(const Texts& texts, QWidget* parent)
    : QFrame(parent), m_texts(texts), m_progress(new QProgressBar(this)), m_title(new QLabel(this)),
      m_count(new QLabel(this)), m_cancel(new QPushButton(texts("cancel"), this))
{
    setObjectName(QStringLiteral("importBar"));
    m_progress->setTextVisible(false);
    m_progress->setAccessibleName(texts("import.progress"));
    m_count->setProperty("weak", true);
    m_title->setTextFormat(Qt::PlainText);
    m_cancel->setObjectName(QStringLiteral("importCancel"));

    auto* words = new QVBoxLayout;
    words->setSpacing(kGrid);
    auto* line = new QHBoxLayout;
    line->addWidget(m_title);
    line->addStretch(1);
    line->addWidget(m_count);
    words->addLayout(line);
    words->addWidget(m_progress);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(3 * kGrid, 2 * kGrid, 3 * kGrid, 2 * kGrid);
    row->setSpacing(3 * kGrid);
    row->addLayout(words, 1);
    row->addWidget(m_cancel);
    QObject::connect(m_cancel, &QPushButton::clicked, this,
                     [this]
                     {
                         m_cancel->setEnabled(false);
                         if (onCancel)
                             onCancel();
                     });
    hide();
}

void ImportBar::SetState(const QString& folder, const ImportState& state)
{
    const QString name = QDir(folder).dirName();
    m_title->setText(m_texts("import.title", {{QLatin1String("folder"), name.isEmpty() ? folder : name}}));
    if (state.total == 0)
    {
        m_progress->setRange(0, 0); // moves without an end
        m_count->setText(m_texts.Count("import.found", static_cast<long long>(state.done)));
    }
    else
    {
        m_progress->setRange(0, kSteps);
        m_progress->setValue(
            static_cast<int>(static_cast<double>(state.done) * kSteps / static_cast<double>(state.total)));
        const QString done =
            m_texts("import.count", {{QLatin1String("done"), m_texts.Number(static_cast<long long>(state.done))},
                                     {QLatin1String("total"), m_texts.Number(static_cast<long long>(state.total))}});
        m_count->setText(state.secondsLeft < 0 ? done : done + QStringLiteral("  ·  ") + TimeLeft(state.secondsLeft));
    }
    if (!isVisible())
        m_cancel->setEnabled(true);
    show();
}

QString ImportBar::TimeLeft(double seconds) const
{
    if (seconds < 10)
        return m_texts("import.soon");
    if (seconds < kMinute)
        return m_texts.Count("import.seconds", std::lround(seconds / 10) * 10);
    return m_texts.Count("import.minutes", std::lround(std::ceil(seconds / kMinute)));
}
} // namespace HynHost
