// What is told of one picture, beside the timeline: the picture itself, its day, its stars and where it lies.
//
// The picture is first the thumbnail and then the file, which a thread of the pane's own reads in the size that is
// shown.
#pragma once

#include <atomic>
#include <functional>
#include <vector>

#include <QFrame>
#include <QImage>

#include <host/FunctionWorker.h>
#include <host/window/Library.h>
#include <host/window/MainPost.h>
#include <host/window/StarRating.h>
#include <host/window/Symbols.h>
#include <host/window/Texts.h>

class QLabel;
class QFormLayout;

namespace HynHost
{
// Shows an image as wide as there is room, in the screen's own pixels.
class PictureBox : public QWidget
{
public:
    using QWidget::QWidget;

    // Makes room for an image of that shape, and shows a symbol until it is there.
    void SetShape(QSize shape, Symbol symbol);
    void SetImage(const QImage& image);
    [[nodiscard]] const QImage& Image() const noexcept { return m_image; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QImage m_image;
    Symbol m_symbol = Symbol::Picture;
};

class DetailPane : public QFrame
{
public:
    // `manager` has its main thread initialised; it and `texts` outlive the pane. Throws HostError when its thread
    // cannot be started.
    DetailPane(Halyon::CHynThreadManager& manager, const Texts& texts, QWidget* parent = nullptr);

    // [main], all of them.

    // Tells only how many are selected.
    void ShowCount(std::size_t selected);
    void ShowDetails(const MediaDetails& details);
    void SetThumbnail(long long id, const QImage& image);
    [[nodiscard]] long long ThumbnailOf() const noexcept { return m_thumbnailOf; }
    [[nodiscard]] const MediaDetails& Details() const noexcept { return m_details; }

    std::function<void(int)> onRated;

private:
    void AddFact(const char* key, const QString& fact);
    void ShowFacts();
    void ReadFile();
    void ShowFile(long long id, const QImage& image);

    const Texts& m_texts;
    QWidget* m_body; // what is told of one
    QLabel* m_hint;  // in its place
    PictureBox* m_picture;
    QLabel* m_name;
    QLabel* m_when;
    QLabel* m_problem;
    StarRating* m_stars;
    QFormLayout* m_facts;
    MediaDetails m_details;
    QImage m_thumbnail;
    long long m_thumbnailOf = 0;
    long long m_fileOf = 0; // the file's own picture is shown
    MainPost m_main;
    std::atomic<long long> m_wantedFile = 0;
    FunctionWorker m_reader; // goes first, when it has read what it is at
};
} // namespace HynHost
