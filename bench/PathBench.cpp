// Paths beside the same written with QString and QDir: comparison without regard to case, nesting, the last component.
//
// Texts are ready in the type that each side works on. Compare medians of one run: --benchmark_repetitions=11
// --benchmark_enable_random_interleaving=true.

#include <array>
#include <cstddef>
#include <string_view>

#include <benchmark/benchmark.h>

#include <QDir>
#include <QString>

#include <halyon/platform/TovPCMac.h>
#include <halyon/tools/CHynPathHelper.h>

using Halyon::CHynPathHelper;

namespace
{
// 60 units each; the second of a pair differs from the first in letter case alone.
using Pair = std::array<const char16_t*, 2>;
constexpr std::array<Pair, 2> kPairs = {{
    {u"/home/ann/Pictures/2024/Summer holidays/Day 03/IMG_2024_0712", u"/HOME/Ann/pictures/2024/summer HOLIDAYS/day "
                                                                      u"03/img_2024_0712"},
    {u"/home/ann/写真/2024年/夏休みの家族旅行/三日目の朝/海辺の散歩と朝ごはんとみんなと花火/IMG_0712",
     u"/Home/Ann/写真/2024年/夏休みの家族旅行/三日目の朝/海辺の散歩と朝ごはんとみんなと花火/img_0712"},
}};
static_assert(std::u16string_view(kPairs[0][0]).size() == 60 && std::u16string_view(kPairs[0][1]).size() == 60);
static_assert(std::u16string_view(kPairs[1][0]).size() == 60 && std::u16string_view(kPairs[1][1]).size() == 60);

constexpr std::u16string_view kBelow = u"/below/it";

struct OfTov
{
    using Text = CTovStringW;
    static Text Make(std::u16string_view text) { return Text(text); }
    static int Compare(const Text& a, const Text& b) { return tov_wcscmpi(a, b); }
    static int Nesting(const Text& a, const Text& b) { return CHynPathHelper::PathInPath(a, b); }
    static Text Name(const Text& path) { return CHynPathHelper::FindFileName(path); }
};

struct OfQString
{
    using Text = QString;
    static Text Make(std::u16string_view text)
    {
        return QString(reinterpret_cast<const QChar*>(text.data()), static_cast<qsizetype>(text.size()));
    }
    static int Compare(const Text& a, const Text& b) { return a.compare(b, Qt::CaseInsensitive); }
    static Text WithSlash(Text path)
    {
        if (!path.isEmpty() && !path.endsWith(u'/'))
            path += u'/';
        return path;
    }
    static int Nesting(const Text& a, const Text& b)
    {
        const Text x = WithSlash(a);
        const Text y = WithSlash(b);
        if (x.size() < y.size())
            return y.startsWith(x, Qt::CaseInsensitive) ? 1 : 0;
        if (x.size() > y.size())
            return x.startsWith(y, Qt::CaseInsensitive) ? -1 : 0;
        return x.compare(y, Qt::CaseInsensitive) == 0 ? -2 : 0;
    }
    static Text Name(const Text& path)
    {
        const qsizetype end = path.endsWith(u'/') ? path.size() - 1 : path.size();
        const qsizetype start = QStringView(path).first(end).lastIndexOf(u'/') + 1;
        return path.mid(start, end - start);
    }
};

struct OfQDir : OfQString
{
    static Text Name(const Text& path) { return QDir(path).dirName(); }
};

// The two texts of a pair, the second with `tail` behind it.
template <class T>
std::array<typename T::Text, 2> Texts(const benchmark::State& state, std::u16string_view tail = {})
{
    const Pair& pair = kPairs[static_cast<std::size_t>(state.range(0))];
    return {T::Make(pair[0]), T::Make(std::u16string(pair[1]).append(tail))};
}

template <class T>
void Compare(benchmark::State& state)
{
    auto texts = Texts<T>(state);
    if (T::Compare(texts[0], texts[1]) != 0)
        state.SkipWithError("the texts differ");
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(texts);
        benchmark::DoNotOptimize(T::Compare(texts[0], texts[1]));
    }
}

template <class T>
void Nesting(benchmark::State& state)
{
    auto texts = Texts<T>(state, kBelow);
    if (T::Nesting(texts[0], texts[1]) != 1)
        state.SkipWithError("the second is not in the first");
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(texts);
        benchmark::DoNotOptimize(T::Nesting(texts[0], texts[1]));
    }
}

template <class T>
void Name(benchmark::State& state)
{
    auto texts = Texts<T>(state, u"/");
    if (T::Name(texts[1]) != T::Make(state.range(0) == 0 ? u"img_2024_0712" : u"img_0712"))
        state.SkipWithError("not the name");
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(texts);
        auto name = T::Name(texts[1]);
        benchmark::DoNotOptimize(name);
    }
}

void BothPairs(benchmark::internal::Benchmark* work)
{
    work->ArgName("pair")->Arg(0)->Arg(1);
}
} // namespace

BENCHMARK_TEMPLATE(Compare, OfTov)->Apply(BothPairs);
BENCHMARK_TEMPLATE(Compare, OfQString)->Apply(BothPairs);
BENCHMARK_TEMPLATE(Nesting, OfTov)->Apply(BothPairs);
BENCHMARK_TEMPLATE(Nesting, OfQString)->Apply(BothPairs);
BENCHMARK_TEMPLATE(Name, OfTov)->Apply(BothPairs);
BENCHMARK_TEMPLATE(Name, OfQString)->Apply(BothPairs);
BENCHMARK_TEMPLATE(Name, OfQDir)->Apply(BothPairs);
