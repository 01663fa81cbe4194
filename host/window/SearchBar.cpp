#include <host/window/SearchBar.h>

#include <chrono>

#include <QButtonGroup>
#include <QFrame>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>

#include <host/window/Style.h>
#include <host/window/Symbols.h>

namespace HynHost
{
namespace
{
constexpr std::chrono::milliseconds kTypingPause{120};
constexpr int kWidthForAll = 860;

QToolButton* FlatButton(Symbol symbol, const QString& name, QWidget* parent)
{
    auto* button = new QToolButton(parent);
    button->setProperty("flat", true);
    button->setIcon(SymbolIcon(symbol, &Colours::text));
    button->setIconSize({20, 20});
    button->setToolTip(name);
    button->setAccessibleName(name);
    return button;
}
} // namespace

SearchBar::SearchBar(const Texts& texts, QWidget* parent) : QWidget(parent), m_texts(texts)
{
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    m_top = MakeTop();
    column->addWidget(m_top);
    m_filter = MakeFilter();
    m_filter->hide();
    column->addWidget(m_filter);
    m_typed.setSingleShot(true);
    m_typed.setInterval(kTypingPause);
    QObject::connect(&m_typed, &QTimer::timeout, this, [this] { Changed(); });
}

QFrame* SearchBar::MakeTop()
{
    auto* top = new QFrame(this);
    top->setObjectName(QStringLiteral("topBar"));
    m_text = new QLineEdit(top);
    m_text->setObjectName(QStringLiteral("searchText"));
    m_text->setPlaceholderText(m_texts("search.text"));
    m_text->setAccessibleName(m_texts("search.text"));
    m_text->setClearButtonEnabled(true);
    m_text->addAction(SymbolIcon(Symbol::Search, &Colours::weak), QLineEdit::LeadingPosition);
    m_text->setMinimumWidth(200);
    m_text->setMaximumWidth(420);
    m_text->installEventFilter(this);
    m_filterButton = FlatButton(Symbol::Filter, m_texts("search.filter"), top);
    m_filterButton->setObjectName(QStringLiteral("filterButton"));
    m_filterButton->setCheckable(true);
    m_counts = new QLabel(top);
    m_counts->setProperty("weak", true);
    m_add = new QPushButton(QLatin1Char(' ') + m_texts("add"), top);
    m_add->setIcon(SymbolIcon(Symbol::Folder, &Colours::text));
    auto* more = FlatButton(Symbol::More, m_texts("more"), top);

    auto* row = new QHBoxLayout(top);
    row->setContentsMargins(3 * kGrid, kGrid + 4, 2 * kGrid, kGrid + 4);
    row->setSpacing(kGrid);
    row->addWidget(m_text, 3);
    row->addWidget(m_filterButton);
    row->addSpacing(kGrid);
    row->addWidget(m_counts);
    row->addStretch(2);
    row->addWidget(m_add);
    row->addWidget(more);
    QObject::connect(m_text, &QLineEdit::textChanged, this, [this] { m_typed.start(); });
    QObject::connect(m_text, &QLineEdit::returnPressed, this,
                     [this]
                     {
                         Changed();
                         if (onLeave)
                             onLeave();
                     });
    QObject::connect(m_filterButton, &QToolButton::toggled, this, [this](bool shown) { m_filter->setVisible(shown); });
    QObject::connect(m_add, &QPushButton::clicked, this, [this] { onAdd(); });
    QObject::connect(more, &QToolButton::clicked, this,
                     [this, more] { onMore(more->mapToGlobal(QPoint(0, more->height() + 4))); });
    return top;
}

QFrame* SearchBar::MakeFilter()
{
    auto* filter = new QFrame(this);
    filter->setObjectName(QStringLiteral("filterBar"));
    auto* row = new QHBoxLayout(filter);
    row->setContentsMargins(3 * kGrid, kGrid, 3 * kGrid, kGrid);
    row->setSpacing(kGrid);
    m_kinds = new QButtonGroup(filter);
    constexpr std::pair<MediaQuery::Sort, const char*> kSorts[] = {{MediaQuery::Sort::All, "search.all"},
                                                                   {MediaQuery::Sort::Pictures, "search.pictures"},
                                                                   {MediaQuery::Sort::Films, "search.films"},
                                                                   {MediaQuery::Sort::Sounds, "search.sounds"}};
    for (const auto& [sort, text] : kSorts)
    {
        auto* button = new QToolButton(filter);
        button->setText(m_texts(text));
        button->setAccessibleName(m_texts(text));
        button->setCheckable(true);
        button->setChecked(sort == MediaQuery::Sort::All);
        m_kinds->addButton(button, static_cast<int>(sort));
        row->addWidget(button);
    }
    m_from = new DayButton(m_texts, m_texts("search.from"), filter);
    m_to = new DayButton(m_texts, m_texts("search.to"), filter);
    m_stars = new StarRating(m_texts("search.stars"), filter);
    m_stars->setObjectName(QStringLiteral("searchStars"));
    m_clear = new QPushButton(m_texts("search.clear"), filter);
    row->addSpacing(2 * kGrid);
    row->addWidget(m_from);
    row->addWidget(m_to);
    row->addSpacing(2 * kGrid);
    m_least = new QLabel(m_texts("search.least"), filter);
    m_least->setProperty("weak", true);
    row->addWidget(m_least);
    row->addWidget(m_stars);
    row->addStretch(1);
    row->addWidget(m_clear);
    QObject::connect(m_kinds, &QButtonGroup::idClicked, this, [this] { Changed(); });
    QObject::connect(m_clear, &QPushButton::clicked, this, [this] { Clear(); });
    m_from->onDay = m_to->onDay = [this]
    {
        Changed();
    };
    m_stars->onRated = [this](int)
    {
        Changed();
    };
    return filter;
}

MediaQuery SearchBar::Query() const
{
    MediaQuery query;
    query.name = m_text->text().trimmed().toStdString();
    query.sort = static_cast<MediaQuery::Sort>(m_kinds->checkedId());
    query.firstDay = m_from->Day();
    query.lastDay = m_to->Day();
    query.leastStars = m_stars->value();
    return query;
}

void SearchBar::Changed()
{
    m_typed.stop();
    MediaQuery query = Query();
    m_clear->setEnabled(query != MediaQuery());
    if (query == m_told)
        return;
    m_told = std::move(query);
    if (onQuery)
        onQuery(m_told);
}

void SearchBar::Clear()
{
    m_text->clear();
    m_kinds->button(0)->setChecked(true);
    m_from->SetDay(0);
    m_to->SetDay(0);
    m_stars->SetStars(0);
    Changed();
}

void SearchBar::SetCounts(std::size_t found, std::size_t all)
{
    const auto total = static_cast<long long>(all);
    m_clear->setEnabled(Query() != MediaQuery());
    for (QWidget* widget : std::initializer_list<QWidget*>{m_text, m_filterButton, m_add})
        widget->setVisible(all > 0);
    m_filter->setVisible(all > 0 && IsFilterShown());
    m_top->setProperty("bare", all == 0);
    m_top->style()->unpolish(m_top); // the sheet looks at the property again
    m_top->style()->polish(m_top);
    if (m_told == MediaQuery())
        m_counts->setText(all == 0 ? QString() : m_texts.Count("count", total));
    else
        m_counts->setText(m_texts.Count("search.count", total,
                                        {{QLatin1String("found"), m_texts.Number(static_cast<long long>(found))}}));
}

void SearchBar::FocusText()
{
    m_text->setFocus(Qt::ShortcutFocusReason);
    m_text->selectAll();
}

bool SearchBar::IsFilterShown() const
{
    return m_filterButton->isChecked();
}

void SearchBar::ShowFilter(bool shown)
{
    m_filterButton->setChecked(shown);
}

// What can be done otherwise, by Escape, makes room in a narrow window.
void SearchBar::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    m_clear->setVisible(width() >= kWidthForAll);
    m_least->setVisible(width() >= kWidthForAll);
}

// Down goes on to the pictures; so does Escape when there is nothing to clear.
bool SearchBar::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != m_text || event->type() != QEvent::KeyPress)
        return QWidget::eventFilter(watched, event);
    const int key = static_cast<QKeyEvent*>(event)->key();
    const bool clears = key == Qt::Key_Escape && Query() != MediaQuery();
    if (clears)
        Clear();
    else if ((key == Qt::Key_Down || key == Qt::Key_Escape) && onLeave)
        onLeave();
    else
        return false;
    return true;
}
} // namespace HynHost
