#include "Models/JSON/Tolerance.h"

#include <QChar>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <locale>
#include <sstream>

namespace orvia::json {

namespace {

/// Walks a number, and takes off what it is made of.
class Digits {
public:
    explicit Digits(std::string_view text)
        : m_rest(text)
    {
    }

    std::size_t skipDigits()
    {
        const std::size_t count = std::min(m_rest.find_first_not_of("0123456789"), m_rest.size());
        m_rest.remove_prefix(count);
        return count;
    }

    bool skipOneOf(std::string_view characters)
    {
        if (m_rest.empty() || characters.find(m_rest.front()) == std::string_view::npos)
            return false;
        m_rest.remove_prefix(1);
        return true;
    }

    bool startsWith(char character) const { return m_rest.starts_with(character); }
    bool atEnd() const { return m_rest.empty(); }

private:
    std::string_view m_rest;
};

/// The length of an escape of one code unit.
constexpr std::size_t codeUnitEscape = 6;

class Rewriter {
public:
    explicit Rewriter(std::string_view document)
        : m_document(document)
    {
    }

    std::optional<std::string> rewritten()
    {
        while (m_position < m_document.size()) {
            if (m_document[m_position] == '"')
                passString();
            else
                ++m_position;
        }
        if (m_copied == 0)
            return std::nullopt;
        m_result.append(m_document.substr(m_copied));
        return std::move(m_result);
    }

private:
    void replace(std::size_t begin, std::size_t end, std::string_view replacement)
    {
        m_result.append(m_document.substr(m_copied, begin - m_copied)).append(replacement);
        m_copied = end;
    }

    void passString()
    {
        ++m_position;
        while (m_position < m_document.size() && m_document[m_position] != '"') {
            if (m_document[m_position] == '\\')
                passEscape();
            else
                ++m_position;
        }
        ++m_position;
    }

    void passEscape()
    {
        const char32_t first = codeUnitAt(m_position);
        const char32_t second = codeUnitAt(m_position + codeUnitEscape);
        if (QChar::isHighSurrogate(first) && QChar::isLowSurrogate(second)) {
            m_position += 2 * codeUnitEscape;
        } else if (QChar::isSurrogate(first)) {
            replace(m_position, m_position + codeUnitEscape, "\\uFFFD");
            m_position += codeUnitEscape;
        } else {
            m_position += 2;
        }
    }

    /// The code unit that is escaped at @p position as in \u0041, or 0 where none is.
    char32_t codeUnitAt(std::size_t position) const
    {
        const std::string_view escape =
            m_document.substr(std::min(position, m_document.size()), codeUnitEscape);
        if (escape.size() < codeUnitEscape || !escape.starts_with("\\u"))
            return 0;
        std::uint16_t unit = 0;
        const auto result = std::from_chars(escape.data() + 2, escape.data() + codeUnitEscape, unit, 16);
        return result.ptr == escape.data() + codeUnitEscape ? unit : 0;
    }

    std::string_view m_document;
    std::size_t m_position = 0;
    std::size_t m_copied = 0; ///< how much of the document the result stands for
    std::string m_result;
};

} // namespace

bool isNumber(std::string_view text)
{
    Digits digits(text);
    digits.skipOneOf("-");
    const bool startsWithZero = digits.startsWith('0');
    const std::size_t integerDigits = digits.skipDigits();
    if (integerDigits == 0 || (integerDigits > 1 && startsWithZero))
        return false;
    if (digits.skipOneOf(".") && digits.skipDigits() == 0)
        return false;
    if (digits.skipOneOf("eE")) {
        digits.skipOneOf("+-");
        if (digits.skipDigits() == 0)
            return false;
    }
    return digits.atEnd();
}

std::optional<double> nearestDouble(std::string_view number)
{
    double value = 0;
    const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
    if (result.ec == std::errc())
        return value;
    // It is too large, or too small to be told from zero. Streams tell one from the other.
    std::istringstream stream{std::string(number)};
    stream.imbue(std::locale::classic());
    stream >> value;
    return value == 0 ? std::optional(0.0) : std::nullopt;
}

std::optional<std::string> withoutHalvedCharacters(std::string_view document)
{
    return Rewriter(document).rewritten();
}

} // namespace orvia::json
