// The pictures by day, the latest first, to scroll through, select and zoom.
//
// Only what is in sight is drawn, and only that and about a screen further in the direction of scrolling is asked for,
// once a frame. A list to the toolkit (a subclass of its list view without a name of its own), so that selecting,
// moving by keys and screen readers work as everywhere; where everything lies is TimelineLayout's.
#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include <QListView>
#include <QTimer>

#include <host/window/CellPictures.h>
#include <host/window/TimelineLayout.h>
#include <host/window/TimelineModel.h>

namespace HynHost
{
class TimelineView : public QListView
{
public:
    static constexpr int kSmallestSide = 80;
    static constexpr int kUsualSide = 168;
    static constexpr int kLargestSide = 320;

    // `texts` outlives the view.
    explicit TimelineView(const Texts& texts, QWidget* parent = nullptr);
    ~TimelineView() override;

    // [main], all of them.

    enum class Keep
    {
        Place,   // what is at the top stays there; the very top stays the top, unless something is selected
        Current, // it is shown where the current item is among what is new, else from the start
    };
    // The selection stays in both cases, as far as it is still there.
    void SetIndex(std::shared_ptr<const MediaIndex> index, Keep keep);
    [[nodiscard]] const MediaIndex& Index() const { return *m_model.Index(); }

    // Looks anew at what is wanted, with the next frame.
    void AskSoon();
    // A null image: the item has none.
    // A cell as CellShape makes it; null: the item has no picture.
    void SetCell(long long id, const QImage& cell);
    // How thumbnails become cells of the present size; what it returns may be called on any thread.
    [[nodiscard]] std::function<QImage(const QImage& thumbnail)> CellShape() const;

    [[nodiscard]] std::vector<long long> SelectedIds() const;
    [[nodiscard]] long long CurrentId() const; // 0: none
    [[nodiscard]] const MediaItem* CurrentItem() const;

    // About as wide as cells are; between the smallest and the largest.
    void SetWantedSide(int side);
    [[nodiscard]] int WantedSide() const noexcept { return m_wantedSide; }

    void ShowMonth(std::uint32_t month); // year * 100 + month
    // The day at the top; 0: none.
    [[nodiscard]] std::uint32_t DayInSight() const;
    [[nodiscard]] bool HasPictureInSight() const;

    [[nodiscard]] int HeadingBottom() const;

    // Where the items' cells are now; empty for one that is out of sight.
    [[nodiscard]] QRect visualRect(const QModelIndex& index) const override;
    void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;
    [[nodiscard]] QModelIndex indexAt(const QPoint& point) const override;
    void doItemsLayout() override;
    void keyboardSearch(const QString& /*search*/) override {} // letters are no names here

    std::function<void(std::vector<long long>)> onWanted; // thumbnails, the most urgent first
    std::function<void()> onCurrent;
    std::function<void()> onSelection;
    std::function<void()> onScrolled;
    std::function<void()> onPainted;
    std::function<void(QPoint)> onMenu; // on the desktop
    std::function<void()> onOpen;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void updateGeometries() override;
    void scrollContentsBy(int dx, int dy) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    void setSelection(const QRect& rect, QItemSelectionModel::SelectionFlags command) override;
    [[nodiscard]] QRegion visualRegionForSelection(const QItemSelection& selection) const override;
    [[nodiscard]] int horizontalOffset() const override { return 0; }
    [[nodiscard]] int verticalOffset() const override;
    [[nodiscard]] bool isIndexHidden(const QModelIndex& /*index*/) const override { return false; }

private:
    // An item that everything else moves around, and how far below the top its cell is.
    struct Anchor
    {
        long long id = 0; // 0: none
        int below = 0;
    };

    [[nodiscard]] std::size_t PlaceOf(const QModelIndex& index) const;
    [[nodiscard]] TimelineLayout::Range InSight() const;
    [[nodiscard]] Anchor TopAnchor() const;
    [[nodiscard]] long long SurvivorIn(const MediaIndex& index) const;
    [[nodiscard]] Anchor AnchorIn(const MediaIndex& index, Keep keep) const;
    void Restore(const Anchor& anchor);
    void Select(const std::vector<long long>& ids, long long current);
    void Relay();
    void Tick();
    void Ask();
    void PaintHeading(QPainter& painter, std::size_t day, int y, bool overCells) const;
    void PaintCell(QPainter& painter, std::size_t place) const;
    void PaintBadges(QPainter& painter, const MediaItem& item, const QRect& cell, bool hasPicture) const;

    const Texts& m_texts;
    TimelineModel m_model;
    TimelineLayout m_layout;
    CellPictures m_pictures;
    std::vector<std::pair<long long, QImage>> m_arrived; // not drawn into cells yet, the latest last
    QTimer m_tick;
    int m_wantedSide = kUsualSide;
    bool m_down = true; // the last direction of scrolling
    bool m_restoring = false;
    bool m_asked = false; // something is wanted now
    bool m_keys = false;  // the user moves by keys, and wants to see where the current item is
    std::size_t m_hovered = static_cast<std::size_t>(-1);
};
} // namespace HynHost
