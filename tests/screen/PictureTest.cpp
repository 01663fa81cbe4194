#include <thread>

#include <QDirIterator>
#include <QImageReader>

#include <sys/stat.h>

#include "ScreenSupport.h"

using namespace Halyon;
using namespace HalyonTest;

namespace
{
bool IsBlack(QRgb pixel)
{
    const int nGray = 11 * qRed(pixel) + 16 * qGreen(pixel) + 5 * qBlue(pixel);
    return nGray * qAlpha(pixel) + 32 * 255 * (255 - qAlpha(pixel)) < 32 * 128 * 255;
}

// The region of a file against a plain loop over the picture, as the toolkit reads it from its path. Returns whether
// there is a picture.
bool ExpectRegionOf(const QString& path)
{
    SCOPED_TRACE(path.toStdString());
    QImageReader reader(path);
    reader.setDecideFormatFromContent(true);
    const QImage image = reader.read().convertToFormat(QImage::Format_ARGB32);
    RgnHandle rgn = CHynPubTools::CreateRgnFromFile(Wide(path));
    EXPECT_EQ(rgn == nullptr, image.isNull());
    if (rgn == nullptr)
        return false;
    QRect around;
    int nWrong = 0;
    for (int y = -1; y <= image.height(); ++y)
        for (int x = -1; x <= image.width(); ++x)
        {
            const bool bBlack = image.valid(x, y) && IsBlack(image.pixel(x, y));
            if (bBlack)
                around |= QRect(x, y, 1, 1);
            nWrong += (PtInRgn({static_cast<std::int16_t>(y), static_cast<std::int16_t>(x)}, rgn) != 0) != bBlack;
        }
    EXPECT_EQ(nWrong, 0);
    Rect bounds = {};
    GetRegionBounds(rgn, &bounds);
    EXPECT_EQ(QRect(bounds.left, bounds.top, bounds.right - bounds.left, bounds.bottom - bounds.top),
              around.isNull() ? QRect(0, 0, 0, 0) : around);
    DisposeRgn(rgn);
    return true;
}
} // namespace

TEST(Picture, EverySampleThatTheMachineReadsBecomesItsBlackPixels)
{
    int nRead = 0;
    for (QDirIterator it(SAMPLES, QDir::Files, QDirIterator::Subdirectories); it.hasNext();)
    {
        if (ExpectRegionOf(it.next()))
            ++nRead;
    }
    EXPECT_GT(nRead, 10);
}

TEST(Picture, EveryFormatThatTheMachineWritesIsRead)
{
    const QTemporaryDir folder;
    for (const QByteArray& format : QImageWriter::supportedImageFormats())
    {
        const QByteArray bytes = Encoded(Noise(61, 43, QImage::Format_ARGB32), format);
        const QString name = QStringLiteral("picture.") + QString::fromLatin1(format);
        EXPECT_TRUE(bytes.isEmpty() || ExpectRegionOf(Write(folder, name, bytes)));
    }
}

TEST(Picture, EveryLayoutOfPixelsAndEveryWidthIsReadAlike)
{
    const QTemporaryDir folder;
    for (const QImage::Format format :
         {QImage::Format_Mono, QImage::Format_Indexed8, QImage::Format_Grayscale8, QImage::Format_Grayscale16,
          QImage::Format_RGB888, QImage::Format_RGB32, QImage::Format_ARGB32, QImage::Format_RGBA64})
    {
        for (const int nWidth : {1, 63, 64, 65, 200})
            EXPECT_TRUE(ExpectRegionOf(Write(folder, QStringLiteral("%1-%2.png").arg(format).arg(nWidth),
                                             Encoded(Noise(nWidth, 5, format), "png"))));
    }
    // Every opacity of every gray: white ground shows through.
    QImage grays(256, 256, QImage::Format_ARGB32);
    for (int y = 0; y < 256; ++y)
        for (int x = 0; x < 256; ++x)
            grays.setPixel(x, y, qRgba(x, x, x, y));
    EXPECT_TRUE(ExpectRegionOf(Write(folder, QStringLiteral("grays.png"), Encoded(grays, "png"))));
    // Premultiplied, as the reader gives it.
    ExpectRegionOf(Write(folder, QStringLiteral("drawing.svg"),
                         "<svg xmlns='http://www.w3.org/2000/svg' width='40' height='30'><rect x='5' y='5' width='20' "
                         "height='9' fill='#111' fill-opacity='0.9'/><text x='2' y='28'>Abc</text></svg>"));
}

TEST(Picture, NoFileNoPictureAndDamageGiveNull)
{
    const QTemporaryDir folder;
    QByteArray png = Encoded(Noise(40, 40, QImage::Format_RGB32), "png");
    QByteArray broken = png;
    broken[broken.size() / 2] = static_cast<char>(broken[broken.size() / 2] ^ 0x55);
    const QString pipe = folder.filePath(QStringLiteral("pipe.png"));
    ASSERT_EQ(mkfifo(pipe.toUtf8().constData(), 0600), 0);
    const QString paths[] = {
        QString(),
        folder.path(),
        folder.filePath(QStringLiteral("missing.png")),
        pipe,
        Write(folder, QStringLiteral("empty.png"), {}),
        Write(folder, QStringLiteral("text.png"), "not a picture"),
        Write(folder, QStringLiteral("short.png"), png.left(png.size() / 2)),
        Write(folder, QStringLiteral("header.jpg"), Encoded(Noise(40, 40, QImage::Format_RGB32), "jpg").left(30)),
        Write(folder, QStringLiteral("broken.png"), broken),
        Write(folder, QStringLiteral("wide.pbm"), "P4\n32768 1\n" + QByteArray(4096, 'x')),
    };
    for (const QString& path : paths)
        EXPECT_EQ(CHynPubTools::CreateRgnFromFile(Wide(path)), nullptr) << path.toStdString();
    EXPECT_EQ(CHynPubTools::CreateRgnFromFile(nullptr), nullptr);
}

TEST(Picture, OtherThreadsReadPicturesButNoDrawings)
{
    const QTemporaryDir folder;
    const QString picture = Write(folder, QStringLiteral("a.png"), Encoded(Noise(9, 9, QImage::Format_RGB32), "png"));
    const QString drawing =
        Write(folder, QStringLiteral("a.svg"),
              "<svg xmlns='http://www.w3.org/2000/svg' width='40' height='30'><text>A</text></svg>");
    std::thread(
        [&]
        {
            RgnHandle rgn = CHynPubTools::CreateRgnFromFile(Wide(picture));
            EXPECT_NE(rgn, nullptr);
            DisposeRgn(rgn);
            EXPECT_EQ(CHynPubTools::CreateRgnFromFile(Wide(drawing)), nullptr);
        })
        .join();
}
