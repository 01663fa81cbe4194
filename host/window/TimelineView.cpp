#include <host/window/TimelineView.h>

#include <algorithm>
#include <chrono>
#include <cmath>

#include <QContextMenuEvent>
#include <QElapsedTimer>
#include <QScrollBar>
#include <QWheelEvent>

#include <host/window/Style.h>

using namespace std::chrono_literals;

namespace HynHost
{
namespace
{
constexpr auto kFrame = 10ms;
constexpr qint64 kDrawingMs = 6; // of a frame for thumbnails that came
constexpr auto kSettled = 120ms; // after the last change of size
constexpr int kScrollBar = 12;
constexpr int kLine = 40;
} // namespace

TimelineView::TimelineView(const Texts& texts, QWidget* parent) : QListView(parent), m_texts(texts), m_model(texts)
{
    setModel(&m_model);
    setSelectionMode(ExtendedSelection);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFrameShape(NoFrame);
    setEditTriggers(NoEditTriggers);
    setMouseTracking(true);
    viewport()->setMouseTracking(true);
    setAccessibleName(texts("timeline"));
    m_tick.setSingleShot(true);
    m_tick.setTimerType(Qt::PreciseTimer);
    QObject::connect(&m_tick, &QTimer::timeout, this, [this] { Tick(); });
}

TimelineView::~TimelineView()
{
    m_restoring = true; // who would be told of the selection may be gone
    setModel(nullptr);  // it goes before the view does
}

// --- what is shown ---------------------------------------------------------------------------------------------------

void TimelineView::SetIndex(std::shared_ptr<const MediaIndex> index, Keep keep)
{
    const Anchor anchor = AnchorIn(*index, keep);
    std::vector<long long> selected = SelectedIds();
    const long long current = keep == Keep::Place ? SurvivorIn(*index) : CurrentId();
    const bool hadSelection = !selected.empty();
    std::erase_if(selected, [&](long long id) { return index->PlaceOf(id) == index->Items().size(); });
    if (hadSelection && selected.empty())
        selected.push_back(current);
    m_restoring = true;
    m_pictures.ForgetMissing();
    m_hovered = static_cast<std::size_t>(-1);
    m_model.SetIndex(std::move(index));
    Relay();
    Select(selected, current);
    Restore(anchor);
    m_restoring = false;
    AskSoon();
    if (onCurrent)
        onCurrent();
    if (onSelection)
        onSelection();
    if (onScrolled)
        onScrolled();
}

// What is selected is what the user looks at. Whoever looks at the very top sees what comes there.
TimelineView::Anchor TimelineView::TopAnchor() const
{
    const QRect selected = selectionModel()->isSelected(currentIndex()) ? visualRect(currentIndex()) : QRect();
    if (selected.intersects(viewport()->rect()))
        return {CurrentId(), selected.top()};
    if (verticalOffset() == 0)
        return {};
    const auto [first, last] = InSight();
    for (std::size_t place = first; place < last; ++place)
    {
        const int below = m_layout.CellOf(place).top() - verticalOffset();
        if (below > -m_layout.Side() / 2)
            return {Index().Items()[place].id, below};
    }
    return {};
}

// The current item, or the one next to it when it is gone; 0 when there is none.
long long TimelineView::SurvivorIn(const MediaIndex& index) const
{
    if (!currentIndex().isValid())
        return 0;
    const std::vector<MediaItem>& items = Index().Items();
    const auto isThere = [&index](const MediaItem& item)
    {
        return index.PlaceOf(item.id) != index.Items().size();
    };
    const auto current = items.begin() + currentIndex().row();
    if (const auto next = std::find_if(current, items.end(), isThere); next != items.end())
        return next->id;
    const auto former = std::find_if(std::make_reverse_iterator(current), items.rend(), isThere);
    return former == items.rend() ? 0 : former->id;
}

// The item at the top, or the next one that is among what is new.
TimelineView::Anchor TimelineView::AnchorIn(const MediaIndex& index, Keep keep) const
{
    const std::size_t none = index.Items().size();
    if (keep == Keep::Current)
        return index.PlaceOf(CurrentId()) == none ? Anchor() : Anchor{CurrentId(), viewport()->height() / 3};
    const auto [first, last] = InSight();
    const Anchor top = TopAnchor();
    for (std::size_t place = Index().PlaceOf(top.id); place < last; ++place)
    {
        if (const long long id = Index().Items()[place].id; index.PlaceOf(id) != none)
            return {id, top.below};
    }
    return {0, verticalOffset()};
}

void TimelineView::Restore(const Anchor& anchor)
{
    const std::size_t place = Index().PlaceOf(anchor.id);
    verticalScrollBar()->setValue(place == Index().Items().size() ? anchor.below
                                                                  : m_layout.CellOf(place).top() - anchor.below);
}

void TimelineView::Select(const std::vector<long long>& ids, long long current)
{
    std::vector<int> rows;
    const std::size_t none = Index().Items().size();
    for (const long long id : ids)
    {
        if (const std::size_t place = Index().PlaceOf(id); place != none)
            rows.push_back(static_cast<int>(place));
    }
    std::ranges::sort(rows);
    QItemSelection selection;
    for (std::size_t at = 0; at < rows.size();)
    {
        std::size_t end = at + 1;
        while (end < rows.size() && rows[end] == rows[end - 1] + 1)
            ++end;
        selection.append(QItemSelectionRange(m_model.index(rows[at]), m_model.index(rows[end - 1])));
        at = end;
    }
    if (const std::size_t place = Index().PlaceOf(current); place != none)
        selectionModel()->setCurrentIndex(m_model.index(static_cast<int>(place)), QItemSelectionModel::NoUpdate);
    selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
}

std::vector<long long> TimelineView::SelectedIds() const
{
    std::vector<long long> ids;
    for (const QItemSelectionRange& range : selectionModel()->selection())
    {
        for (int row = range.top(); row <= range.bottom(); ++row)
            ids.push_back(Index().Items()[static_cast<std::size_t>(row)].id);
    }
    return ids;
}

const MediaItem* TimelineView::CurrentItem() const
{
    const QModelIndex current = currentIndex();
    return current.isValid() ? &Index().Items()[PlaceOf(current)] : nullptr;
}

long long TimelineView::CurrentId() const
{
    const MediaItem* item = CurrentItem();
    return item == nullptr ? 0 : item->id;
}

std::size_t TimelineView::PlaceOf(const QModelIndex& index) const
{
    return static_cast<std::size_t>(index.row());
}

// --- geometry --------------------------------------------------------------------------------------------------------

void TimelineView::Relay()
{
    m_layout.Arrange(m_model.Index(), width() - kScrollBar, m_wantedSide);
    verticalScrollBar()->setSingleStep(kLine);
    verticalScrollBar()->setPageStep(std::max(1, viewport()->height() - HeadingBottom()));
    verticalScrollBar()->setRange(0, std::max(0, m_layout.Height() - viewport()->height()));
    viewport()->update();
}

void TimelineView::SetWantedSide(int side)
{
    const Anchor anchor = TopAnchor();
    m_wantedSide = std::clamp(side, kSmallestSide, kLargestSide);
    Relay();
    Restore(anchor);
    m_tick.start(kSettled);
}

// The list's own layout is of no use here: what it does is left to the view below it.
// NOLINTBEGIN(bugprone-parent-virtual-call)

void TimelineView::doItemsLayout()
{
    QAbstractItemView::doItemsLayout();
}

void TimelineView::updateGeometries()
{
    Relay();
    QAbstractItemView::updateGeometries();
    verticalScrollBar()->setSingleStep(kLine);
}

void TimelineView::resizeEvent(QResizeEvent* event)
{
    const Anchor anchor = TopAnchor();
    QAbstractItemView::resizeEvent(event);
    Relay();
    Restore(anchor);
    m_tick.start(kSettled);
}

int TimelineView::verticalOffset() const
{
    return verticalScrollBar()->value();
}

int TimelineView::HeadingBottom() const
{
    return TimelineLayout::kHeading - kGrid;
}

QRect TimelineView::visualRect(const QModelIndex& index) const
{
    return index.isValid() ? m_layout.CellOf(PlaceOf(index)).translated(0, -verticalOffset()) : QRect();
}

QModelIndex TimelineView::indexAt(const QPoint& point) const
{
    const std::size_t place = m_layout.ItemAt(point + QPoint(0, verticalOffset()));
    return place < Index().Items().size() ? m_model.index(static_cast<int>(place)) : QModelIndex();
}

// The heading that stays at the top hides what is below it.
void TimelineView::scrollTo(const QModelIndex& index, ScrollHint hint)
{
    if (!index.isValid())
        return;
    const QRect cell = m_layout.CellOf(PlaceOf(index));
    const int top = cell.top() - HeadingBottom() - TimelineLayout::kGap;
    const int bottom = cell.bottom() + TimelineLayout::kGap - viewport()->height();
    const int now = verticalOffset();
    if (hint == PositionAtTop || (hint == EnsureVisible && now > top))
        verticalScrollBar()->setValue(top);
    else if (hint == PositionAtBottom || (hint == EnsureVisible && now < bottom))
        verticalScrollBar()->setValue(bottom);
    else if (hint == PositionAtCenter)
        verticalScrollBar()->setValue((top + bottom) / 2);
}

void TimelineView::ShowMonth(std::uint32_t month)
{
    const std::size_t day = Index().DayAtOrBefore(month * 100 + 99);
    if (day < Index().Days().size())
        verticalScrollBar()->setValue(m_layout.TopOf(day));
}

std::uint32_t TimelineView::DayInSight() const
{
    return Index().Days().empty() ? 0 : Index().Days()[m_layout.DayAt(verticalOffset())].day;
}

TimelineLayout::Range TimelineView::InSight() const
{
    return m_layout.ItemsBetween(verticalOffset(), verticalOffset() + viewport()->height());
}

bool TimelineView::HasPictureInSight() const
{
    const auto [first, last] = InSight();
    for (std::size_t place = first; place < last; ++place)
    {
        if (m_pictures.Find(Index().Items()[place].id) != nullptr)
            return true;
    }
    return false;
}

// --- thumbnails ------------------------------------------------------------------------------------------------------

void TimelineView::AskSoon()
{
    if (!m_tick.isActive())
        m_tick.start(kFrame);
}

std::function<QImage(const QImage& thumbnail)> TimelineView::CellShape() const
{
    return [side = m_layout.Side(), ratio = devicePixelRatioF()](const QImage& thumbnail)
    {
        return DrawCell(thumbnail, side, ratio);
    };
}

void TimelineView::SetCell(long long id, const QImage& cell)
{
    m_arrived.emplace_back(id, cell);
    AskSoon();
}

// A frame's share of drawing thumbnails into cells; what comes in one bunch must not hold the window up.
void TimelineView::Tick()
{
    QElapsedTimer timer;
    timer.start();
    std::size_t drawn = 0;
    for (; drawn < m_arrived.size() && timer.elapsed() < kDrawingMs; ++drawn)
    {
        const auto& [id, cell] = m_arrived[drawn];
        m_pictures.Put(id, cell, devicePixelRatioF());
        if (const std::size_t place = Index().PlaceOf(id); place < Index().Items().size())
            viewport()->update(m_layout.CellOf(place).translated(0, -verticalOffset()));
    }
    m_arrived.erase(m_arrived.begin(), m_arrived.begin() + static_cast<std::ptrdiff_t>(drawn));
    if (!m_arrived.empty())
        m_tick.start(0ms);
    else
        Ask();
}

void TimelineView::Ask()
{
    const int top = verticalOffset();
    const int screen = viewport()->height();
    const auto [first, last] = InSight();
    const auto [aheadFirst, aheadLast] =
        m_down ? m_layout.ItemsBetween(top + screen, top + 2 * screen) : m_layout.ItemsBetween(top - screen, top);
    std::vector<long long> wanted;
    const auto want = [&](std::size_t place)
    {
        const long long id = Index().Items()[place].id;
        if (!m_pictures.IsSettled(id, m_layout.Side(), devicePixelRatioF()))
            wanted.push_back(id);
    };
    for (std::size_t place = first; place < last; ++place)
        want(place);
    // What is nearest comes first.
    for (std::size_t ahead = 0; ahead < aheadLast - aheadFirst; ++ahead)
        want(m_down ? aheadFirst + ahead : aheadLast - 1 - ahead);
    if ((m_asked || !wanted.empty()) && onWanted)
    {
        m_asked = !wanted.empty();
        onWanted(std::move(wanted));
    }
}

// --- input -----------------------------------------------------------------------------------------------------------

void TimelineView::scrollContentsBy(int /*dx*/, int dy)
{
    m_down = dy == 0 ? m_down : dy < 0;
    viewport()->update();
    AskSoon();
    if (onScrolled && !m_restoring)
        onScrolled();
}

void TimelineView::wheelEvent(QWheelEvent* event)
{
    if ((event->modifiers() & Qt::ControlModifier) == 0)
        return QAbstractItemView::wheelEvent(event);
    SetWantedSide(static_cast<int>(std::lround(m_wantedSide * std::pow(1.1, event->angleDelta().y() / 120.0))));
    event->accept();
}

void TimelineView::keyPressEvent(QKeyEvent* event)
{
    m_keys = true;
    QListView::keyPressEvent(event);
}

void TimelineView::mousePressEvent(QMouseEvent* event)
{
    m_keys = false;
    QListView::mousePressEvent(event);
}

void TimelineView::mouseMoveEvent(QMouseEvent* event)
{
    QAbstractItemView::mouseMoveEvent(event);
    const std::size_t former = m_hovered;
    m_hovered = m_layout.ItemAt(event->position().toPoint() + QPoint(0, verticalOffset()));
    if (former != m_hovered)
        viewport()->update();
}

void TimelineView::leaveEvent(QEvent* event)
{
    QAbstractItemView::leaveEvent(event);
    m_hovered = static_cast<std::size_t>(-1);
    viewport()->update();
}

void TimelineView::mouseDoubleClickEvent(QMouseEvent* event)
{
    QAbstractItemView::mouseDoubleClickEvent(event);
    if (event->button() == Qt::LeftButton && indexAt(event->position().toPoint()).isValid() && onOpen)
        onOpen();
}

void TimelineView::contextMenuEvent(QContextMenuEvent* event)
{
    QPoint where = event->globalPos();
    if (event->reason() == QContextMenuEvent::Keyboard)
        where = viewport()->mapToGlobal(visualRect(currentIndex()).center());
    if (currentIndex().isValid() && !SelectedIds().empty() && onMenu)
        onMenu(where);
}

void TimelineView::currentChanged(const QModelIndex& current, const QModelIndex& previous)
{
    if (m_restoring)
        return;
    QListView::currentChanged(current, previous);
    viewport()->update();
    if (onCurrent)
        onCurrent();
}

void TimelineView::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected)
{
    QListView::selectionChanged(selected, deselected);
    viewport()->update();
    if (onSelection && !m_restoring)
        onSelection();
}

QModelIndex TimelineView::moveCursor(CursorAction action, Qt::KeyboardModifiers /*modifiers*/)
{
    const std::size_t count = Index().Items().size();
    if (count == 0)
        return {};
    std::size_t place = currentIndex().isValid() ? PlaceOf(currentIndex()) : InSight().first;
    const auto rows = static_cast<int>(std::max(1, (viewport()->height() - HeadingBottom()) / (m_layout.Side() + 1)));
    const bool moves = currentIndex().isValid(); // else the first key only chooses where to start
    switch (action)
    {
    case MoveHome:
        place = 0;
        break;
    case MoveEnd:
        place = count - 1;
        break;
    case MoveLeft:
    case MovePrevious:
        place -= moves && place > 0 ? 1 : 0;
        break;
    case MoveRight:
    case MoveNext:
        place += moves && place + 1 < count ? 1 : 0;
        break;
    case MoveUp:
        place = moves ? m_layout.Above(place) : place;
        break;
    case MoveDown:
        place = moves ? m_layout.Below(place) : place;
        break;
    case MovePageUp:
        for (int row = 0; row < rows; ++row)
            place = m_layout.Above(place);
        break;
    case MovePageDown:
        for (int row = 0; row < rows; ++row)
            place = m_layout.Below(place);
        break;
    }
    return m_model.index(static_cast<int>(std::min(place, count - 1)));
}

// From the item under one corner to the one under the other, as text is selected.
void TimelineView::setSelection(const QRect& rect, QItemSelectionModel::SelectionFlags command)
{
    const QModelIndex from = indexAt(rect.topLeft());
    const QModelIndex to = indexAt(rect.bottomRight());
    const QModelIndex one = from.isValid() ? from : to;
    if (!one.isValid())
        return selectionModel()->select(QItemSelection(), command);
    const QModelIndex other = to.isValid() ? to : from;
    selectionModel()->select(QItemSelection(std::min(one, other), std::max(one, other)), command);
}

QRegion TimelineView::visualRegionForSelection(const QItemSelection& /*selection*/) const
{
    return viewport()->rect();
}
// NOLINTEND(bugprone-parent-virtual-call)
} // namespace HynHost
