#include <host/window/DetailPane.h>

#include <utility>

#include <QDir>
#include <QFileInfo>
#include <QFormLayout>
#include <QImageReader>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QScrollArea>
#include <QVBoxLayout>

#include <halyon/tools/CHynPubTools.h>
#include <host/window/Style.h>
#include <host/window/WideText.h>

using Halyon::CHynPubTools;

namespace HynHost
{
namespace
{
constexpr int kWidth = 320;
constexpr QSize kPicture(kWidth - 4 * kGrid, 300); // at most
constexpr QSize kFlat(16, 9);                      // what is no picture
constexpr int kSymbol = 48;

QSize Fitted(const QSize& size, const QSize& box)
{
    std::int32_t width = size.width();
    std::int32_t height = size.height();
    CHynPubTools::TLFitIn(&width, &height, box.width(), box.height());
    return {width, height};
}

// The picture in the file, no larger than `box` and turned as the camera was held; null when there is none.
QImage ReadScaled(const QString& path, const QSize& box)
{
    QImageReader reader(path);
    reader.setAutoTransform(true);
    const bool isTurned = (reader.transformation() & QImageIOHandler::TransformationRotate90) != 0;
    if (const QSize size = reader.size();
        size.isValid() && (size.width() > box.width() || size.height() > box.height()))
        reader.setScaledSize(Fitted(size, isTurned ? box.transposed() : box));
    return reader.read();
}

QDateTime LocalTime(const FILETIME& moment)
{
    const QString text = FromWide(CHynPubTools::FileTimeToString(u"%04d-%02d-%02dT%02d:%02d:%02d", &moment));
    return QDateTime::fromString(text, Qt::ISODate);
}

QLabel* Label(QWidget* parent, double size, QFont::Weight weight, bool weak)
{
    auto* label = new QLabel(parent);
    label->setFont(SizedFont(size, weight));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setProperty("weak", weak);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setMinimumWidth(1); // a long name without a blank must not widen the pane
    return label;
}

// Names have no blanks to break lines at; a line may break behind what separates their parts.
QString Breakable(QString name)
{
    for (const char separator : {'/', '_', '-', '.'})
        name.replace(QLatin1Char(separator), QLatin1Char(separator) + QString(QChar(0x200B)));
    return name;
}

MediaKind KindNamed(const std::string& name)
{
    for (auto kind = MediaKind::Jpeg; kind < MediaKind::Mkv; kind = static_cast<MediaKind>(static_cast<int>(kind) + 1))
    {
        if (MediaKindName(kind) == name)
            return kind;
    }
    return MediaKind::Mkv;
}

// As people write it: "~" is their home.
QString FolderOf(const QString& path)
{
    QString folder = QFileInfo(path).path();
    const QString home = QDir::homePath();
    if (folder == home || folder.startsWith(home + QLatin1Char('/')))
        folder.replace(0, home.size(), QLatin1Char('~'));
    return folder;
}
} // namespace

void PictureBox::SetShape(QSize shape, Symbol symbol)
{
    m_image = {};
    m_symbol = symbol;
    setFixedHeight(Fitted(shape, kPicture).height());
    update();
}

void PictureBox::SetImage(const QImage& image)
{
    m_image = image;
    if (!image.isNull())
        setFixedHeight(Fitted(image.size(), kPicture).height());
    update();
}

void PictureBox::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    QRect place = rect();
    if (!m_image.isNull())
    {
        place.setSize(Fitted(m_image.size(), size()));
        place.moveCenter(rect().center());
    }
    QPainterPath outline;
    outline.addRoundedRect(place, kCorner, kCorner);
    painter.fillPath(outline, TheColours().picture);
    painter.setClipPath(outline);
    if (!m_image.isNull())
        return painter.drawImage(place, m_image);
    QRectF square(0, 0, kSymbol, kSymbol);
    square.moveCenter(QRectF(place).center());
    QColor weak = TheColours().weak;
    weak.setAlpha(110);
    DrawSymbol(painter, m_symbol, square, weak);
}

DetailPane::DetailPane(Halyon::CHynThreadManager& manager, const Texts& texts, QWidget* parent)
    : QFrame(parent), m_texts(texts), m_picture(new PictureBox(this)), m_name(Label(this, 1.2, QFont::DemiBold, false)),
      m_when(Label(this, 1.0, QFont::Normal, true)), m_problem(Label(this, 1.0, QFont::Normal, false)),
      m_stars(new StarRating(texts("rating"), this)), m_main(manager), m_reader(manager, "picture")
{
    setObjectName(QStringLiteral("detailPane"));
    setFixedWidth(kWidth);
    setAccessibleName(texts("details"));
    m_problem->setProperty("problem", true);
    m_stars->setObjectName(QStringLiteral("detailStars"));

    auto* body = new QWidget;
    body->setObjectName(QStringLiteral("detailBody"));
    m_facts = new QFormLayout;
    m_facts->setContentsMargins(0, kGrid, 0, 0);
    m_facts->setHorizontalSpacing(2 * kGrid);
    m_facts->setVerticalSpacing(kGrid);
    m_facts->setLabelAlignment(Qt::AlignLeft | Qt::AlignTop);
    m_facts->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    auto* column = new QVBoxLayout(body);
    column->setContentsMargins(2 * kGrid, 2 * kGrid, 2 * kGrid, 2 * kGrid);
    column->setSpacing(kGrid);
    column->addWidget(m_picture);
    column->addSpacing(kGrid);
    column->addWidget(m_name);
    column->addWidget(m_when);
    column->addWidget(m_stars);
    column->addWidget(m_problem);
    column->addLayout(m_facts);
    column->addStretch(1);
    auto* scroll = new QScrollArea(this);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setWidget(body);
    m_body = scroll;
    m_hint = Label(this, 1.0, QFont::Normal, true);
    m_hint->setAlignment(Qt::AlignCenter);
    m_hint->setMargin(3 * kGrid);
    auto* whole = new QVBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->addWidget(m_body);
    whole->addWidget(m_hint);
    m_stars->onRated = [this](int stars)
    {
        if (onRated)
            onRated(stars);
    };
    ShowCount(0);
}

void DetailPane::ShowCount(std::size_t selected)
{
    m_details = {};
    m_fileOf = 0;
    m_hint->setText(selected == 0 ? m_texts("details.none")
                                  : m_texts.Count("selected", static_cast<long long>(selected)));
    m_hint->show();
    m_body->hide();
}

void DetailPane::ShowDetails(const MediaDetails& details)
{
    const bool isOther = details.id != m_details.id || details.path != m_details.path;
    m_details = details;
    m_hint->hide();
    m_body->show();
    m_name->setText(Breakable(QFileInfo(FromText(details.path)).fileName()));
    const QDateTime taken = LocalTime(details.taken);
    m_when->setText(
        m_texts("day.time", {{QLatin1String("day"), m_texts.Locale().toString(taken.date(), QLocale::LongFormat)},
                             {QLatin1String("time"), m_texts.Locale().toString(taken.time(), QLocale::ShortFormat)}}));
    m_stars->SetStars(details.stars);
    m_problem->setVisible(!details.problem.empty() || !details.isThere);
    m_problem->setText(details.isThere ? m_texts.Translated(FromText(details.problem)) : m_texts("details.away"));
    ShowFacts();
    if (!isOther && m_fileOf == details.id)
        return;
    m_fileOf = 0;
    const Symbol symbol = SymbolOf(KindNamed(details.kind));
    const bool hasShape = symbol == Symbol::Picture && details.width > 0 && details.height > 0;
    m_picture->SetShape(hasShape ? QSize(details.width, details.height) : kFlat, symbol);
    if (m_thumbnailOf == details.id)
        m_picture->SetImage(m_thumbnail);
    ReadFile();
}

void DetailPane::ShowFacts()
{
    while (m_facts->rowCount() > 0)
        m_facts->removeRow(0);
    AddFact("fact.kind", FromText(m_details.kind));
    AddFact("fact.size", m_texts.Size(m_details.size));
    if (m_details.width > 0)
        AddFact("fact.pixels", m_texts("pixels", {{QLatin1String("width"), QString::number(m_details.width)},
                                                  {QLatin1String("height"), QString::number(m_details.height)}}));
    AddFact("fact.camera", FromText(m_details.camera));
    AddFact("fact.folder", Breakable(FolderOf(FromText(m_details.path))));
}

void DetailPane::AddFact(const char* key, const QString& fact)
{
    if (fact.isEmpty())
        return;
    auto* name = new QLabel(m_texts(key));
    name->setProperty("weak", true);
    name->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    QLabel* value = Label(nullptr, 1.0, QFont::Normal, false);
    value->setText(fact);
    m_facts->addRow(name, value);
}

void DetailPane::SetThumbnail(long long id, const QImage& image)
{
    m_thumbnail = image;
    m_thumbnailOf = id;
    if (id == m_details.id && m_fileOf != id)
        m_picture->SetImage(image);
}

void DetailPane::ReadFile()
{
    m_wantedFile.store(m_details.isThere ? m_details.id : 0);
    if (!m_details.isThere)
        return;
    const QSize box = kPicture * devicePixelRatioF();
    m_reader.Post(
        [this, id = m_details.id, path = FromText(m_details.path), box]
        {
            if (m_wantedFile.load() != id)
                return;
            m_main.Post([this, id, image = ReadScaled(path, box)] { ShowFile(id, image); });
        });
}

void DetailPane::ShowFile(long long id, const QImage& image)
{
    if (id != m_details.id || image.isNull())
        return;
    m_fileOf = id;
    m_picture->SetImage(image);
}
} // namespace HynHost
