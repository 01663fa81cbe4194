// The wide string beside QString and std::u16string, on a path of 60 ASCII units and on a Japanese text of 60 units.
//
// Every work is one template over the three types; an adapter a type says how it spells the work. Compare medians of
// one run: --benchmark_repetitions=11 --benchmark_enable_random_interleaving=true.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include <QString>
#include <QStringEncoder>

#include <halyon/string/CTovStringW.h>

namespace
{
constexpr std::array<const char16_t*, 2> kTexts = {
    u"/home/ann/Pictures/2024/Summer holidays/Day 03/IMG_2024_0712",
    u"写真／二〇二四年／夏休みの家族旅行／三日目の朝／海辺の散歩と朝ごはん／みんなで撮った集合写真の一枚目と二枚目と三"
    u"枚目。終",
};

struct OfTov
{
    using Text = CTovStringW;
    static Text Make(const char16_t* psz) { return Text(psz); }
    static Text Mid(const Text& text, int first, int count) { return text.Mid(first, count); }
    static Text Left(const Text& text, int count) { return text.Left(count); }
    static auto Length(const Text& text) { return text.GetLength(); }
    static auto UTF8(const Text& text) { return text.ToUTF8(); }
    static void UTF8Into(const Text& text, char* buffer, int size) { text.GetUTF8String(buffer, size); }
    static void Append(Text& text, const char16_t* psz) { text += psz; }
};

struct OfQt
{
    using Text = QString;
    static Text Make(const char16_t* psz) { return QString(reinterpret_cast<const QChar*>(psz)); }
    static Text Mid(const Text& text, int first, int count) { return text.mid(first, count); }
    static Text Left(const Text& text, int count) { return text.left(count); }
    static auto Length(const Text& text) { return text.size(); }
    static auto UTF8(const Text& text) { return text.toUtf8(); }
    static void UTF8Into(const Text& text, char* buffer, int /*size*/)
    {
        QStringEncoder encoder(QStringEncoder::Utf8, QStringEncoder::Flag::Stateless);
        *encoder.appendToBuffer(buffer, text) = 0;
    }
    static void Append(Text& text, const char16_t* psz) { text.append(QStringView(psz)); }
};

struct OfStd
{
    using Text = std::u16string;
    static Text Make(const char16_t* psz) { return Text(psz); }
    static Text Mid(const Text& text, std::size_t first, std::size_t count) { return text.substr(first, count); }
    static Text Left(const Text& text, std::size_t count) { return text.substr(0, count); }
    static auto Length(const Text& text) { return text.size(); }
    static void Append(Text& text, const char16_t* psz) { text += psz; }
};

template <class T>
typename T::Text TextOf(const benchmark::State& state)
{
    return T::Make(kTexts[static_cast<std::size_t>(state.range(0))]);
}

template <class T>
void Make(benchmark::State& state)
{
    const char16_t* psz = kTexts[static_cast<std::size_t>(state.range(0))];
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(psz);
        auto text = T::Make(psz);
        benchmark::DoNotOptimize(text);
    }
}

template <class T>
void Copy(benchmark::State& state)
{
    const auto source = TextOf<T>(state);
    for (auto _ : state)
    {
        auto copy = source; // NOLINT(performance-unnecessary-copy-initialization)
        benchmark::DoNotOptimize(copy);
    }
}

template <class T>
void CopyEmpty(benchmark::State& state)
{
    const typename T::Text source;
    for (auto _ : state)
    {
        auto copy = source; // NOLINT(performance-unnecessary-copy-initialization)
        benchmark::DoNotOptimize(copy);
    }
}

template <class T>
void Move(benchmark::State& state)
{
    auto source = TextOf<T>(state);
    for (auto _ : state)
    {
        auto taken = std::move(source);
        benchmark::DoNotOptimize(taken);
        source = std::move(taken);
        benchmark::DoNotOptimize(source);
    }
}

template <class T>
void Mid(benchmark::State& state)
{
    const auto source = TextOf<T>(state);
    for (auto _ : state)
    {
        auto part = T::Mid(source, 10, 40);
        benchmark::DoNotOptimize(part);
    }
}

template <class T>
void Left(benchmark::State& state)
{
    const auto source = TextOf<T>(state);
    for (auto _ : state)
    {
        auto part = T::Left(source, 40);
        benchmark::DoNotOptimize(part);
    }
}

template <class T>
void Length(benchmark::State& state)
{
    const std::vector<typename T::Text> texts(1024, TextOf<T>(state));
    for (auto _ : state)
    {
        auto sum = T::Length(texts.front());
        for (const auto& text : texts)
            sum += T::Length(text);
        benchmark::DoNotOptimize(sum);
    }
}

template <class T>
void UTF8(benchmark::State& state)
{
    const auto source = TextOf<T>(state);
    for (auto _ : state)
    {
        auto bytes = T::UTF8(source);
        benchmark::DoNotOptimize(bytes);
    }
}

template <class T>
void UTF8Into(benchmark::State& state)
{
    const auto source = TextOf<T>(state);
    std::array<char, 1024> buffer{};
    for (auto _ : state)
    {
        T::UTF8Into(source, buffer.data(), static_cast<int>(buffer.size()));
        benchmark::DoNotOptimize(buffer);
    }
}

template <class T>
void Append(benchmark::State& state)
{
    const auto source = TextOf<T>(state);
    for (auto _ : state)
    {
        auto text = source;
        T::Append(text, u"/2024");
        benchmark::DoNotOptimize(text);
    }
}

// Paths of one folder, so that comparisons meet a long common beginning.
template <class T>
void Sort(benchmark::State& state)
{
    std::vector<typename T::Text> texts;
    std::uint32_t number = 1;
    for (int i = 0; i < 1000; ++i)
    {
        auto text = TextOf<T>(state);
        number = number * 1664525 + 1013904223;
        const std::array<char16_t, 3> tail = {static_cast<char16_t>(u'a' + number % 26),
                                              static_cast<char16_t>(u'a' + number / 26 % 26), 0};
        T::Append(text, tail.data());
        texts.push_back(std::move(text));
    }
    for (auto _ : state)
    {
        auto sorted = texts;
        std::sort(sorted.begin(), sorted.end());
        benchmark::DoNotOptimize(sorted);
    }
}

void BothTexts(benchmark::internal::Benchmark* work)
{
    work->ArgName("text")->Arg(0)->Arg(1);
}
} // namespace

#define FOR_EACH_TYPE(work)                                                                                            \
    BENCHMARK_TEMPLATE(work, OfTov)->Apply(BothTexts);                                                                 \
    BENCHMARK_TEMPLATE(work, OfQt)->Apply(BothTexts);                                                                  \
    BENCHMARK_TEMPLATE(work, OfStd)->Apply(BothTexts)

FOR_EACH_TYPE(Make);
FOR_EACH_TYPE(Copy);
BENCHMARK_TEMPLATE(CopyEmpty, OfTov);
BENCHMARK_TEMPLATE(CopyEmpty, OfQt);
BENCHMARK_TEMPLATE(CopyEmpty, OfStd);
FOR_EACH_TYPE(Move);
FOR_EACH_TYPE(Mid);
FOR_EACH_TYPE(Left);
FOR_EACH_TYPE(Length);
FOR_EACH_TYPE(Append);
FOR_EACH_TYPE(Sort);
BENCHMARK_TEMPLATE(UTF8, OfTov)->Apply(BothTexts);
BENCHMARK_TEMPLATE(UTF8, OfQt)->Apply(BothTexts);
BENCHMARK_TEMPLATE(UTF8Into, OfTov)->Apply(BothTexts);
BENCHMARK_TEMPLATE(UTF8Into, OfQt)->Apply(BothTexts);
