#include <host/window/Texts.h>

#include <array>
#include <cstdint>

#include <QDate>
#include <QFile>
#include <QFileInfo>

#include <nlohmann/json.hpp>

#include <halyon/tools/CHynPubTools.h>
#include <host/HostError.h>
#include <host/window/WideText.h>

using Halyon::CHynPubTools;

namespace HynHost
{
namespace
{
QString Filled(QString text, Texts::Values values)
{
    for (const auto& [name, value] : values)
        text.replace(QLatin1Char('{') + name + QLatin1Char('}'), value);
    return text;
}

// A text, or its form for a number where it has several.
QString FormOf(const nlohmann::json& text, const char* form)
{
    return QString::fromStdString((text.is_object() ? text.at(form) : text).get<std::string>());
}

// The system's own locale knows the territory, and what the user has set beside the language.
QLocale LocaleOf(const QString& localisation)
{
    QLocale system = QLocale::system();
    const QLocale named(localisation);
    if (system.language() == named.language())
        return system;
    return named.language() == QLocale::English ? QLocale(QLocale::English, QLocale::UnitedKingdom) : named;
}
} // namespace

Texts::Texts()
{
    const QString english = FromWide(CHynPubTools::GetBundleResourcePathWithName(nullptr, u"en.lproj/texts.json"));
    const QString own = FromWide(CHynPubTools::GetBundleLocalizePathWithName(nullptr, u"texts.json"));
    Read(english);
    if (own != english)
        Read(own);
    m_locale = LocaleOf(QFileInfo(QFileInfo(own).path()).baseName());
}

void Texts::Read(const QString& path)
try
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw HostError("cannot read", path.toStdString(), file.errorString().toStdString());
    const nlohmann::json texts = nlohmann::json::parse(file.readAll().toStdString());
    for (const auto& entry : texts.items())
        m_forms[entry.key()] = {FormOf(entry.value(), "one"), FormOf(entry.value(), "other")};
}
catch (const nlohmann::json::exception& error)
{
    throw HostError("cannot read", path.toStdString(), error.what());
}

QString Texts::operator()(const char* key, Values values) const
{
    const auto at = m_forms.find(std::string_view(key));
    return Filled(at == m_forms.end() ? QString::fromUtf8(key) : at->second.other, values);
}

QString Texts::Count(const char* key, long long number, Values values) const
{
    const auto at = m_forms.find(std::string_view(key));
    if (at == m_forms.end())
        return QString::fromUtf8(key);
    const QString& form = number == 1 ? at->second.one : at->second.other;
    return Filled(Filled(form, values), {{QLatin1String("n"), Number(number)}});
}

QString Texts::Translated(const QString& english) const
{
    const auto at = m_forms.find("said: " + english.toStdString());
    return at == m_forms.end() ? english : at->second.other;
}

QString Texts::Size(long long bytes) const
{
    constexpr std::array kUnits = {"size.bytes", "size.bytes", "size.kilobytes", "size.megabytes", "size.gigabytes"};
    std::array<char16_t, 16> number{};
    const auto unit = static_cast<std::size_t>(CHynPubTools::GetFileSizeStr(bytes, number.data()));
    QString text = QString::fromUtf16(number.data());
    text.replace(QLatin1Char('.'), m_locale.decimalPoint());
    return (*this)(kUnits.at(unit), {{QLatin1String("n"), text}});
}

QString Texts::Day(std::uint32_t day) const
{
    const QDate date(static_cast<int>(day / 10000), static_cast<int>(day / 100 % 100), static_cast<int>(day % 100));
    return m_locale.toString(date, QLocale::LongFormat);
}

QString Texts::Month(std::uint32_t month) const
{
    const QDate date(static_cast<int>(month / 100), static_cast<int>(month % 100), 1);
    return (*this)("month", {{QLatin1String("month"), m_locale.standaloneMonthName(date.month())},
                             {QLatin1String("year"), QString::number(date.year())}});
}
} // namespace HynHost
