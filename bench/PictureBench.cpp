// A picture of 4,000 x 3,000 pixels to the region of its black pixels, beside what the toolkit needs to decode it
// alone.
#include <algorithm>
#include <array>
#include <memory>

#include <QImage>
#include <QImageReader>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

#include <halyon/tools/CHynPubTools.h>

namespace
{
struct Kind
{
    const char* name; // of the file: its format
    QImage::Format format;
};

constexpr Kind kKinds[] = {
    {"photo.jpg", QImage::Format_RGB32},  {"gray.jpg", QImage::Format_Grayscale8},
    {"photo.png", QImage::Format_RGB32},  {"cut-out.png", QImage::Format_ARGB32},
    {"photo.webp", QImage::Format_RGB32},
};

// Slopes with a little grain over them, as a photograph has: neither flat nor noise alone.
QImage Picture()
{
    QImage image(4000, 3000, QImage::Format_ARGB32);
    std::uint32_t uState = 1;
    for (int y = 0; y < image.height(); ++y)
    {
        auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x)
        {
            uState = uState * 1664525u + 1013904223u;
            const int nGrain = static_cast<int>(uState >> 28);
            row[x] = qRgba(x * 240 / 4000 + nGrain, y * 240 / 3000 + nGrain, (x + y) * 240 / 7000 + nGrain,
                           std::min(255, x / 8));
        }
    }
    return image;
}

// The files, written at first use.
QString File(const Kind& kind)
{
    static const QTemporaryDir folder;
    static const QImage picture = Picture();
    const QString path = folder.filePath(QString::fromLatin1(kind.name));
    if (!QFile::exists(path))
        picture.convertToFormat(kind.format).save(path, nullptr, 90);
    return path;
}

void DecodeByQt(benchmark::State& state, const Kind& kind)
{
    const QString path = File(kind);
    for (auto step : state)
    {
        const QImage image = QImageReader(path).read();
        benchmark::DoNotOptimize(image.constBits());
    }
}

void RegionByHalyon(benchmark::State& state, const Kind& kind)
{
    const std::u16string path = File(kind).toStdU16String();
    for (auto step : state)
    {
        Halyon::RgnHandle rgn = Halyon::CHynPubTools::CreateRgnFromFile(path.c_str());
        if (rgn == nullptr)
            state.SkipWithError("no region");
        Halyon::DisposeRgn(rgn);
    }
}

[[maybe_unused]] const bool g_registered = []
{
    for (const Kind& kind : kKinds)
    {
        const std::string name = kind.name;
        benchmark::RegisterBenchmark(("decode, Qt/" + name).c_str(), DecodeByQt, kind)->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark(("region/" + name).c_str(), RegionByHalyon, kind)->Unit(benchmark::kMillisecond);
    }
    return true;
}();
} // namespace
