#include "Models/JSON/Tolerance.h"

#include <QChar>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <locale>
#include <sstream>

namespace orvia::json {

namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// Streams tell a number that is too large from one that is too small to be told from zero.
bool isBeyondDouble(std::string_view number)
{
    std::istringstream stream{std::string(number)};
    stream.imbue(std::locale::classic());
    double value = 0;
    stream >> value;
    return stream.fail() && value != 0;
}

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
            const char c = m_document[m_position];
            if (c == '"')
                passString();
            else if (c == '-' || isDigit(c))
                passNumber();
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

    std::size_t passDigits()
    {
        const std::size_t begin = m_position;
        while (m_position < m_document.size() && isDigit(m_document[m_position]))
            ++m_position;
        return m_position - begin;
    }

    bool passOneOf(std::string_view characters)
    {
        if (m_position == m_document.size()
            || characters.find(m_document[m_position]) == std::string_view::npos)
            return false;
        ++m_position;
        return true;
    }

    /// Passes one number; text that is none is passed too and stays as it is.
    void passNumber()
    {
        const std::size_t begin = m_position;
        passOneOf("-");
        const std::size_t integerBegin = m_position;
        const std::size_t integerDigits = passDigits();
        if (integerDigits == 0 || (integerDigits > 1 && m_document[integerBegin] == '0'))
            return;
        bool isInteger = true;
        if (passOneOf(".")) {
            isInteger = false;
            if (passDigits() == 0)
                return;
        }
        if (passOneOf("eE")) {
            isInteger = false;
            passOneOf("+-");
            if (passDigits() == 0)
                return;
        }
        rewriteNumber(begin, isInteger);
    }

    void rewriteNumber(std::size_t begin, bool isInteger)
    {
        const std::string_view number = m_document.substr(begin, m_position - begin);
        if (isInteger && fitsInteger(number))
            return;
        if (isBeyondDouble(number))
            replace(begin, m_position, "[]");
        else if (isInteger)
            replace(m_position, m_position, "e0");
    }

    static bool fitsInteger(std::string_view number)
    {
        const char* const last = number.data() + number.size();
        std::int64_t negative = 0;
        std::uint64_t positive = 0;
        const auto result = number.front() == '-' ? std::from_chars(number.data(), last, negative)
                                                  : std::from_chars(number.data(), last, positive);
        return result.ec == std::errc();
    }

    std::string_view m_document;
    std::size_t m_position = 0;
    std::size_t m_copied = 0; ///< how much of the document the result stands for
    std::string m_result;
};

} // namespace

std::optional<std::string> withinParserLimits(std::string_view document)
{
    return Rewriter(document).rewritten();
}

} // namespace orvia::json
