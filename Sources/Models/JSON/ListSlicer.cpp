#include "Models/JSON/ListSlicer.h"

namespace orvia::json {

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
/// How far from where a run should end its mark is looked for, in bytes.
constexpr std::size_t markRange = 16 * 1024;

/// Where the string whose text starts at @p start of @p document is over, behind its closing quote.
std::size_t endOfString(std::string_view document, std::size_t start)
{
    for (std::size_t quote = document.find('"', start); quote != std::string_view::npos;
         quote = document.find('"', quote + 1)) {
        std::size_t text = quote;
        while (text > start && document[text - 1] == '\\')
            --text;
        const bool isEscaped = (quote - text) % 2 != 0;
        if (!isEscaped)
            return quote + 1;
    }
    return std::string_view::npos;
}

/// The beginning of the first of @p elements, up to the value of its first member, when it is an object with
/// members and without white space in that place.
std::string_view firstKey(std::string_view elements)
{
    constexpr std::string_view beginning = "{\"";
    if (!elements.starts_with(beginning))
        return {};
    const std::size_t end = endOfString(elements, beginning.size());
    if (end == std::string_view::npos || !elements.substr(end).starts_with(':'))
        return {};
    return elements.substr(0, end + 1);
}

} // namespace

ListSlicer::ListSlicer(QByteArrayView document, std::string_view key)
    : m_rest(document.data(), static_cast<std::size_t>(document.size()))
{
    if (m_rest.starts_with(byteOrderMark))
        m_rest.remove_prefix(byteOrderMark.size());
    m_isInside = skip('{') && skip('"') && m_rest.starts_with(key);
    if (!m_isInside)
        return;
    m_rest.remove_prefix(key.size());
    m_isInside = m_rest.starts_with('"') && skip('"') && skip(':') && skip('[');
    m_mark = firstKey(m_rest);
}

std::optional<ListSlicer::Slice> ListSlicer::next(std::size_t size)
{
    const std::lock_guard lock(m_mutex);
    if (!m_isInside)
        return std::nullopt;
    auto elements = cutAtMark(size);
    if (!elements)
        elements = cut(size);
    m_isInside = m_isInside && elements;
    return elements ? std::optional(Slice{m_count++, *elements}) : std::nullopt;
}

bool ListSlicer::reachedEnd() const
{
    const std::lock_guard lock(m_mutex);
    return m_reachedEnd;
}

/// Takes @p expected and the white space before it off the rest.
bool ListSlicer::skip(char expected)
{
    m_rest.remove_prefix(std::min(m_rest.find_first_not_of(" \t\n\r"), m_rest.size()));
    if (!m_rest.starts_with(expected))
        return false;
    m_rest.remove_prefix(1);
    return true;
}

/// Services write every element of a list in the same order of members, so that reading all up to the next
/// element can be spared. The mark is not in a string, where its quotes would be escaped. It may be in an
/// inner list; then a run does not parse, and the document is no page of runs.
std::optional<std::string_view> ListSlicer::cutAtMark(std::size_t size)
{
    if (m_mark.empty())
        return std::nullopt;
    const std::string_view searched = m_rest.substr(0, size + markRange);
    for (std::size_t at = searched.find(m_mark, size); at != std::string_view::npos;
         at = searched.find(m_mark, at + 1)) {
        if (!searched.substr(0, at).ends_with("},"))
            continue;
        const std::string_view elements = m_rest.substr(0, at - 1);
        m_rest.remove_prefix(at);
        return elements;
    }
    return std::nullopt;
}

/// Elements are told apart by the commas outside of strings, objects and inner lists.
std::optional<std::string_view> ListSlicer::cut(std::size_t size)
{
    std::size_t depth = 0;
    for (std::size_t at = 0; at < m_rest.size(); ++at) {
        switch (m_rest[at]) {
        case '"':
            at = endOfString(m_rest, at + 1);
            if (at == std::string_view::npos)
                return std::nullopt;
            --at;
            break;
        case '{':
        case '[':
            ++depth;
            break;
        case '}':
        case ']': {
            if (depth > 0) {
                --depth;
                break;
            }
            const std::string_view elements = m_rest.substr(0, at);
            m_rest.remove_prefix(at);
            m_isInside = false;
            m_reachedEnd =
                skip(']') && skip('}') && m_rest.find_first_not_of(" \t\n\r") == std::string_view::npos;
            return elements;
        }
        case ',':
            if (depth == 0 && at >= size) {
                const std::string_view elements = m_rest.substr(0, at);
                m_rest.remove_prefix(at + 1);
                return elements;
            }
            break;
        default:
            break;
        }
    }
    return std::nullopt;
}

} // namespace orvia::json
