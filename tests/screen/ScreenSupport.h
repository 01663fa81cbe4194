// What the tests of the screen share.
#pragma once

#include <functional>
#include <tuple>

#include <gtest/gtest.h>

#include <QApplication>
#include <QBuffer>
#include <QElapsedTimer>
#include <QFile>
#include <QImageWriter>
#include <QTemporaryDir>

#include <halyon/string/CTovStringW.h>
#include <halyon/tools/CHynPubTools.h>

namespace HalyonTest
{
// The application object is the one that the tools make.
inline bool OnX11()
{
    POINT point = {};
    Halyon::CHynPubTools::GetCursorPos(&point);
    return QGuiApplication::platformName() == QLatin1String("xcb");
}

// Handles events until `reached`; false when that takes more than ten seconds.
inline bool WaitUntil(const std::function<bool()>& reached)
{
    QElapsedTimer timer;
    for (timer.start(); timer.elapsed() < 10000;)
    {
        if (reached())
            return true;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    return false;
}

inline auto Fields(const SRect32& rect)
{
    return std::tuple(rect.left, rect.top, rect.right, rect.bottom);
}

inline CTovStringW Wide(const QString& text)
{
    return CTovStringW(
        std::u16string_view(reinterpret_cast<const char16_t*>(text.utf16()), static_cast<std::size_t>(text.size())));
}

// The same noise each time, in every channel.
inline QImage Noise(int nWidth, int nHeight, QImage::Format format)
{
    QImage image(nWidth, nHeight, QImage::Format_ARGB32);
    std::uint32_t uState = 12345;
    for (int y = 0; y < nHeight; ++y)
        for (int x = 0; x < nWidth; ++x)
        {
            uState = uState * 1664525u + 1013904223u;
            image.setPixel(x, y, uState ^ uState >> 13);
        }
    return image.convertToFormat(format);
}

inline QByteArray Encoded(const QImage& image, const QByteArray& format)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QImageWriter(&buffer, format).write(image);
    return buffer.data();
}

// Returns the path of the file that was written.
inline QString Write(const QTemporaryDir& folder, const QString& name, const QByteArray& bytes)
{
    QString path = folder.filePath(name);
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    return path;
}
} // namespace HalyonTest
