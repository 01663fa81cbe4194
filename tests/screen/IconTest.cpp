#include <QCryptographicHash>
#include <QDir>
#include <QIcon>
#include <QtEndian>

#include <halyon/tools/CHynIconHelper2.h>

#include "ScreenSupport.h"

using namespace Halyon;
using namespace HalyonTest;

namespace
{
struct IconDeleter
{
    void operator()(IconRef icon) const { CHynIconHelper2::DestroyIcon(icon); }
};
using HeldIcon = std::unique_ptr<OpaqueIconRef, IconDeleter>;

QByteArray Saved(IconRef icon)
{
    unsigned char* bytes = nullptr;
    const std::uint32_t uSize = CHynIconHelper2::SaveIcon(icon, &bytes);
    QByteArray result(reinterpret_cast<const char*>(bytes), static_cast<qsizetype>(uSize));
    delete[] bytes;
    return result;
}

HeldIcon Loaded(QByteArray bytes)
{
    return HeldIcon(CHynIconHelper2::LoadIcon(reinterpret_cast<unsigned char*>(bytes.data()),
                                              static_cast<std::uint32_t>(bytes.size())));
}

template <class Number>
void Append(QByteArray& bytes, Number number)
{
    number = qToLittleEndian(number);
    bytes.append(reinterpret_cast<const char*>(&number), sizeof(number));
}

// An icon file as desktops know it, with a picture for each.
QByteArray IconFile(const QList<QImage>& pictures)
{
    QByteArray head;
    QByteArray body;
    for (const auto number : {0, 1, static_cast<int>(pictures.size())})
        Append(head, static_cast<quint16>(number));
    for (const QImage& picture : pictures)
    {
        const QByteArray png = Encoded(picture, "png");
        head.append(static_cast<char>(picture.width())).append(static_cast<char>(picture.height())).append(2, '\0');
        Append(head, quint16{1});
        Append(head, quint16{32});
        Append(head, static_cast<quint32>(png.size()));
        Append(head, static_cast<quint32>(6 + 16 * pictures.size() + body.size()));
        body += png;
    }
    return head + body;
}

HeldIcon FromFile(const QByteArray& bytes)
{
    const QTemporaryDir folder;
    FSRef ref = {};
    const QByteArray path = Write(folder, QStringLiteral("icon.ico"), bytes).toUtf8();
    EXPECT_EQ(FSPathMakeRef(path.constData(), &ref, nullptr), noErr);
    return HeldIcon(CHynIconHelper2::CreateIconFromFile(&ref));
}

// Every picture in the bytes of an icon.
QList<QImage> PicturesIn(const QByteArray& bytes)
{
    QList<QImage> pictures;
    for (qsizetype n = bytes.indexOf("\x89PNG"); n >= 0; n = bytes.indexOf("\x89PNG", n + 1))
        pictures.append(QImage::fromData(bytes.mid(n), "png"));
    return pictures;
}

QList<QImage> Sizes()
{
    QList<QImage> pictures;
    for (const int nSide : {16, 32, 48, 128})
        pictures.append(Noise(nSide, nSide, QImage::Format_ARGB32));
    return pictures;
}
} // namespace

TEST(Icon, EverySizeSurvivesTheRoundTripBitForBit)
{
    const HeldIcon icon = FromFile(IconFile(Sizes()));
    ASSERT_NE(icon, nullptr);
    const QByteArray bytes = Saved(icon.get());
    EXPECT_EQ(PicturesIn(bytes), Sizes());
    const HeldIcon again = Loaded(bytes);
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(Saved(again.get()), bytes);
}

TEST(Icon, ThePictureOfAToolkitsIconComesBack)
{
    OnX11();
    QIcon icon;
    for (const QImage& picture : Sizes())
        icon.addPixmap(QPixmap::fromImage(picture));
    const HeldIcon made(IconRefFromQIcon(icon));
    const HeldIcon loaded = Loaded(Saved(made.get()));
    const QIcon back = QIconFromIconRef(loaded.get());
    EXPECT_EQ(back.availableSizes(), icon.availableSizes());
    for (const QSize& size : icon.availableSizes())
        EXPECT_EQ(back.pixmap(size).toImage(), icon.pixmap(size).toImage()) << size.width();
    EXPECT_EQ(IconRefFromQIcon(QIcon()), nullptr);
    EXPECT_TRUE(QIconFromIconRef(nullptr).isNull());
}

TEST(Icon, DamagedBytesGiveNull)
{
    const HeldIcon icon = FromFile(IconFile({Noise(6, 5, QImage::Format_ARGB32)}));
    const QByteArray bytes = Saved(icon.get());
    ASSERT_FALSE(bytes.isEmpty());
    for (qsizetype n = 0; n < bytes.size(); ++n)
    {
        QByteArray damaged = bytes;
        damaged[n] = static_cast<char>(damaged[n] ^ 1);
        EXPECT_EQ(Loaded(damaged), nullptr) << "byte " << n;
        EXPECT_EQ(Loaded(bytes.left(n)), nullptr) << "cut to " << n;
    }
    EXPECT_EQ(Loaded(bytes + '\0'), nullptr);

    // Whole by its own sum, and says that its first picture has 4 GiB, which as a signed size of 32 bits is -1.
    QByteArray forged = bytes.chopped(32);
    forged.replace(12, 4, "\xFF\xFF\xFF\xFF");
    forged += QCryptographicHash::hash(forged, QCryptographicHash::Sha256);
    EXPECT_EQ(Loaded(forged), nullptr);
    EXPECT_EQ(CHynIconHelper2::LoadIcon(nullptr, 8), nullptr);
}

TEST(Icon, ABundlesResourceIsFoundByItsName)
{
    const QTemporaryDir folder;
    ASSERT_TRUE(QDir(folder.path()).mkpath(QStringLiteral("Contents/Resources/ja.lproj")));
    for (const auto& [name, nSide] : {std::pair("app.png", 16), std::pair("ja.lproj/新.png", 24)})
        Write(folder, QStringLiteral("Contents/Resources/") + QString::fromUtf8(name),
              Encoded(Noise(nSide, nSide, QImage::Format_ARGB32), "png"));
    CFBundleRef bundle = CHynPubTools::CreateBundleByPath(Wide(folder.path()));
    const auto side = [bundle](const char16_t* name)
    {
        const HeldIcon icon(CHynIconHelper2::LoadIcon(name, bundle));
        return icon != nullptr ? PicturesIn(Saved(icon.get())).value(0).width() : 0;
    };
    EXPECT_EQ(side(u"app.png"), 16);
    EXPECT_EQ(side(u"新.png"), 24);
    EXPECT_EQ(side(u"missing.png"), 0);
    EXPECT_EQ(side(nullptr), 0);
    EXPECT_EQ(CHynIconHelper2::LoadIcon(u"app.png", nullptr), nullptr);
    CFRelease(bundle);
}

TEST(Icon, AFileThatIsNoIconGivesNull)
{
    EXPECT_EQ(FromFile("not a picture"), nullptr);
    EXPECT_EQ(FromFile(Encoded(Noise(1025, 4, QImage::Format_RGB32), "png")), nullptr) << "a photograph is no icon";
    EXPECT_NE(FromFile(Encoded(Noise(1024, 4, QImage::Format_RGB32), "png")), nullptr);
    QByteArray cut = IconFile(Sizes());
    EXPECT_EQ(FromFile(cut.left(cut.size() - 100)), nullptr) << "one of its sizes is damaged";
    const FSRef nothing = {};
    EXPECT_EQ(CHynIconHelper2::CreateIconFromFile(&nothing), nullptr);
    EXPECT_EQ(CHynIconHelper2::CreateIconFromFile(nullptr), nullptr);
}

TEST(Icon, NoIconFailsEachCall)
{
    const HeldIcon icon = FromFile(Encoded(Noise(4, 4, QImage::Format_ARGB32), "png"));
    unsigned char byte = 0;
    unsigned char* out = &byte;
    EXPECT_EQ(CHynIconHelper2::SaveIcon(icon.get(), nullptr), 0u);
    EXPECT_EQ(CHynIconHelper2::SaveIcon(nullptr, &out), 0u);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(CHynIconHelper2::DestroyIcon(nullptr), 0);
}
