#include <host/SqlScript.h>

#include <algorithm>
#include <array>
#include <cstddef>

namespace HynHost
{
namespace
{
struct Token
{
    enum class Kind
    {
        Blank, // white space or a comment
        Word,
        Quoted, // a string or a quoted name
        Other,  // a number, or one character
    };
    Kind kind = Kind::Blank;
    std::string_view text;

    // `upper` is in upper case.
    [[nodiscard]] bool Is(std::string_view upper) const
    {
        return kind != Kind::Quoted && std::ranges::equal(text, upper, {}, Upper);
    }
    [[nodiscard]] bool IsName() const { return kind == Kind::Word || kind == Kind::Quoted; }

    static char Upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }
};

bool IsBlank(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool IsWordPart(char c)
{
    const char upper = Token::Upper(c);
    return (upper >= 'A' && upper <= 'Z') || IsDigit(c) || c == '_' || c == '$' ||
           static_cast<unsigned char>(c) >= 0x80;
}

template <class Predicate>
std::size_t LengthWhile(std::string_view text, Predicate predicate)
{
    return static_cast<std::size_t>(std::ranges::find_if_not(text, predicate) - text.begin());
}

// Up to and with `end`, or all of the text when it does not come.
std::size_t LengthThrough(std::string_view text, std::size_t from, std::string_view end)
{
    const std::size_t at = text.find(end, from);
    return at == std::string_view::npos ? text.size() : at + end.size();
}

// A doubled quote stands for itself inside of what is quoted, except in brackets.
std::size_t QuotedLength(std::string_view text)
{
    const char quote = text.front();
    if (quote == '[')
        return LengthThrough(text, 1, "]");
    std::size_t length = LengthThrough(text, 1, {&quote, 1});
    while (length < text.size() && text[length] == quote)
        length = LengthThrough(text, length + 1, {&quote, 1});
    return length;
}

Token Measure(std::string_view text)
{
    const char c = text.front();
    if (IsBlank(c))
        return {Token::Kind::Blank, text.substr(0, LengthWhile(text, IsBlank))};
    if (text.starts_with("--"))
        return {Token::Kind::Blank, text.substr(0, LengthThrough(text, 2, "\n"))};
    if (text.starts_with("/*"))
        return {Token::Kind::Blank, text.substr(0, LengthThrough(text, 2, "*/"))};
    if (std::string_view("'\"`[").find(c) != std::string_view::npos)
        return {Token::Kind::Quoted, text.substr(0, QuotedLength(text))};
    if (IsWordPart(c))
        return {IsDigit(c) ? Token::Kind::Other : Token::Kind::Word, text.substr(0, LengthWhile(text, IsWordPart))};
    return {Token::Kind::Other, text.substr(0, 1)};
}

// The tokens of a text, one after the other.
class Tokens
{
public:
    explicit Tokens(std::string_view text) : m_rest(text) {}

    // An empty text at the end.
    Token NextOfAll()
    {
        const Token token = m_rest.empty() ? Token{} : Measure(m_rest);
        m_rest.remove_prefix(token.text.size());
        return token;
    }

    // Blanks passed over.
    Token Next()
    {
        Token token = NextOfAll();
        while (token.kind == Token::Kind::Blank && !token.text.empty())
            token = NextOfAll();
        return token;
    }

    [[nodiscard]] std::string_view Rest() const { return m_rest; }

private:
    std::string_view m_rest;
};

// Watches the tokens of one statement go by and tells when it ends. The body of a trigger has semicolons of its own: it
// ends with one that follows an END that follows another.
class StatementEnd
{
public:
    // True when `token` is the semicolon that ends the statement.
    bool Sees(const Token& token)
    {
        const bool semicolon = token.Is(";");
        const bool ends = semicolon && (!m_trigger || (m_lastIsEnd && m_semicolonBeforeLast));
        if (m_opening)
            Open(token);
        m_semicolonBeforeLast = m_lastIsSemicolon;
        m_lastIsSemicolon = semicolon;
        m_lastIsEnd = token.Is("END");
        return ends;
    }

private:
    void Open(const Token& token)
    {
        constexpr std::array<std::string_view, 6> kBefore = {"EXPLAIN", "QUERY", "PLAN", "CREATE", "TEMP", "TEMPORARY"};
        m_opening = std::ranges::any_of(kBefore, [&](std::string_view word) { return token.Is(word); });
        m_trigger = !m_opening && m_created && token.Is("TRIGGER");
        m_created = m_created || token.Is("CREATE");
    }

    bool m_opening = true; // still among the words before TRIGGER
    bool m_created = false;
    bool m_trigger = false;
    bool m_lastIsSemicolon = false;
    bool m_lastIsEnd = false;
    bool m_semicolonBeforeLast = false;
};

// The first word that says what a statement does; what stands in parentheses does not count.
Token MainVerb(Tokens& tokens)
{
    constexpr std::array<std::string_view, 6> kVerbs = {"SELECT", "VALUES", "INSERT", "REPLACE", "UPDATE", "DELETE"};
    int depth = 0;
    for (Token token = tokens.Next(); !token.text.empty(); token = tokens.Next())
    {
        depth += token.Is("(") ? 1 : token.Is(")") ? -1 : 0;
        if (depth == 0 && std::ranges::any_of(kVerbs, [&](std::string_view verb) { return token.Is(verb); }))
            return token;
    }
    return {};
}

// What follows the word RETURNING outside of parentheses.
std::string_view ReturningList(Tokens tokens)
{
    int depth = 0;
    for (Token token = tokens.Next(); !token.text.empty(); token = tokens.Next())
    {
        depth += token.Is("(") ? 1 : token.Is(")") ? -1 : 0;
        if (depth == 0 && token.Is("RETURNING"))
            return tokens.Rest();
    }
    return {};
}

// The table that a change names after its verb: [SCHEMA.]NAME. Its alias does not count in RETURNING.
std::string ChangedTable(Tokens& tokens)
{
    Token token = tokens.Next();
    if (token.Is("OR"))
    {
        tokens.Next();
        token = tokens.Next();
    }
    if (token.Is("INTO") || token.Is("FROM"))
        token = tokens.Next();
    std::string table(token.text);
    if (tokens.Next().Is("."))
        table.append(".").append(tokens.Next().text);
    return table;
}
} // namespace

std::vector<SqlStatement> SplitStatements(std::string_view script)
{
    std::vector<SqlStatement> statements;
    Tokens tokens(script);
    StatementEnd end;
    int line = 1;
    const char* begin = nullptr; // of the current statement; null before its first token
    const char* last = nullptr;  // behind its last one
    int beginLine = 1;
    const auto finish = [&]
    {
        if (begin != nullptr)
            statements.push_back({std::string(begin, last), beginLine});
        begin = nullptr;
        end = StatementEnd();
    };
    for (Token token = tokens.NextOfAll(); !token.text.empty(); token = tokens.NextOfAll())
    {
        if (token.kind != Token::Kind::Blank && end.Sees(token))
        {
            finish();
        }
        else if (token.kind != Token::Kind::Blank)
        {
            if (begin == nullptr)
                beginLine = line;
            begin = begin == nullptr ? token.text.data() : begin;
            last = token.text.data() + token.text.size();
        }
        line += static_cast<int>(std::ranges::count(token.text, '\n'));
    }
    finish();
    return statements;
}

SqlKind KindOf(std::string_view statement)
{
    Tokens tokens(statement);
    const Token first = tokens.Next();
    if (first.Is("PRAGMA"))
        return SqlKind::Pragma;
    if (first.Is("EXPLAIN"))
        return tokens.Next().Is("QUERY") ? SqlKind::QueryPlan : SqlKind::Explain;
    Tokens again(statement);
    const Token verb = MainVerb(again);
    if (!first.Is("WITH") && verb.text.data() != first.text.data())
        return SqlKind::Other;
    return verb.Is("SELECT") || verb.Is("VALUES") ? SqlKind::Query : SqlKind::Change;
}

std::string ReturningQuery(std::string_view statement)
{
    if (KindOf(statement) != SqlKind::Change)
        return {};
    Tokens tokens(statement);
    MainVerb(tokens);
    const std::string_view list = ReturningList(tokens);
    return list.empty() ? std::string() : "SELECT " + std::string(list) + "\nFROM " + ChangedTable(tokens);
}

std::string PragmaName(std::string_view statement)
{
    Tokens tokens(statement);
    if (!tokens.Next().Is("PRAGMA"))
        return {};
    Token name = tokens.Next();
    Tokens ahead = tokens;
    if (ahead.Next().Is("."))
        name = ahead.Next();
    return name.kind == Token::Kind::Word ? std::string(name.text) : std::string();
}
} // namespace HynHost
