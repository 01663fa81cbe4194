// The window's words in the user's language: a file of texts in the bundle, and the language's way to write dates and
// numbers.
//
//     texts("import.done", {{"folder", name}})        // "Pictures is imported"
//     texts.Count("count", 3)                         // "3 pictures"
//
// A file holds a text for each key, or one for each plural form ("one", "other"), with {names} to fill in; {n} is the
// number that a text is chosen by. What a language's file lacks is taken from the English one.
#pragma once

#include <initializer_list>
#include <map>
#include <utility>

#include <QLocale>
#include <QString>

namespace HynHost
{
class Texts
{
public:
    using Values = std::initializer_list<std::pair<QLatin1String, QString>>;

    // Reads the texts of the program's bundle, in the localisation that suits the user's languages best. Throws
    // HostError when there is none or it is no such file. [any]
    Texts();

    // The text, or the key itself where there is none. [any]
    [[nodiscard]] QString operator()(const char* key, Values values = {}) const;
    [[nodiscard]] QString Count(const char* key, long long number, Values values = {}) const;

    // What the program's other parts say in English; the same where no text is known for it. [any]
    [[nodiscard]] QString Translated(const QString& english) const;

    // The one that the texts are for, in the user's own territory where that is known. [any]
    [[nodiscard]] const QLocale& Locale() const noexcept { return m_locale; }

    [[nodiscard]] QString Number(long long number) const { return m_locale.toString(number); }
    // "48.2 MB", with the language's decimal point and unit. [any]
    [[nodiscard]] QString Size(long long bytes) const;
    // "Saturday, 21 November 2026"; `day` is packed as MediaItem::day. [any]
    [[nodiscard]] QString Day(std::uint32_t day) const;
    // "November 2026"; `month` is year * 100 + month. [any]
    [[nodiscard]] QString Month(std::uint32_t month) const;

private:
    struct Forms
    {
        QString one;
        QString other;
    };

    void Read(const QString& path);

    std::map<std::string, Forms, std::less<>> m_forms;
    QLocale m_locale;
};
} // namespace HynHost
