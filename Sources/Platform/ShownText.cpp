#include "Platform/ShownText.h"

#include "Platform/UnicodeText.h"

#include <QStringList>

#include <utility>

namespace orvia {

namespace {

/// Enough for every script.
constexpr int mostMarks = 4;
/// Enough for the flags that are spelled in tag characters.
constexpr int mostJoined = 6;
/// How much of a text is looked at per line at most, in code units: a flood of invisible characters in front
/// of the visible ones is skipped up to here.
constexpr qsizetype mostScanned = 20'000;
constexpr qsizetype widestToolTip = 160;
constexpr qsizetype toolTipLine = 100;
constexpr QChar ellipsis(0x2026);
constexpr QChar wordJoiner(0x2060);

bool isMark(char32_t character)
{
    const QChar::Category category = QChar::category(character);
    return category == QChar::Mark_NonSpacing || category == QChar::Mark_Enclosing;
}

/// Whether @p character says how those around it join or in which direction they go.
bool isJoining(char32_t character)
{
    const bool isTag = character >= 0xE0020 && character <= 0xE007F;
    const bool isDirectionMark = character == 0x200E || character == 0x200F || character == 0x061C;
    const bool isJoiner = character == 0x200C || character == 0x200D;
    return isTag || isDirectionMark || isJoiner;
}

/// The signs that stand before Arabic numbers are formats too, but are seen.
bool isVisibleFormat(char32_t character)
{
    return (character >= 0x0600 && character <= 0x0605) || character == 0x06DD || character == 0x08E2;
}

bool isInvisible(char32_t character)
{
    const QChar::Category category = QChar::category(character);
    // The Hangul fillers are letters that stand for the absence of one.
    const bool isFiller =
        character == 0x115F || character == 0x1160 || character == 0x3164 || character == 0xFFA0;
    return category == QChar::Other_Control || category == QChar::Other_Surrogate || isFiller
           || (category == QChar::Other_Format && !isVisibleFormat(character));
}

/// Takes one code point after the other into a line.
class LineBuilder {
public:
    explicit LineBuilder(qsizetype longest)
        : m_longest(longest)
    {
        m_line.reserve(std::min<qsizetype>(longest + 3, 64));
    }

    bool isFull() const { return m_line.size() > m_longest; }

    void add(char32_t character)
    {
        if (QChar::isSpace(character)) {
            m_spaceIsDue = !m_line.isEmpty();
        } else if (isMark(character) || isJoining(character)) {
            if (++m_attached <= (isMark(character) ? mostMarks : mostJoined))
                append(character);
        } else if (!isInvisible(character)) {
            m_attached = 0;
            append(character);
        }
    }

    QString take(bool isWhole)
    {
        if (isWhole && !isFull())
            return std::move(m_line);
        QTextBoundaryFinder characters(QTextBoundaryFinder::Grapheme, m_line);
        characters.setPosition(std::min(m_line.size(), m_longest - 1));
        if (!characters.isAtBoundary())
            characters.toPreviousBoundary();
        m_line.truncate(std::max<qsizetype>(0, characters.position()));
        return m_line + ellipsis;
    }

private:
    void append(char32_t character)
    {
        if (std::exchange(m_spaceIsDue, false)) {
            m_line.append(u' ');
            m_attached = 0;
        }
        m_line.append(QStringView(QChar::fromUcs4(character)));
    }

    const qsizetype m_longest;
    QString m_line;
    int m_attached = 0;
    bool m_spaceIsDue = false;
};

/// Where a line of @p text ends that begins at @p from.
qsizetype lineEnd(const QString& text, qsizetype from)
{
    if (text.size() - from <= toolTipLine)
        return text.size();
    const qsizetype space = text.lastIndexOf(u' ', from + toolTipLine);
    if (space > from)
        return space;
    const qsizetype end = from + toolTipLine;
    return text.at(end - 1).isHighSurrogate() ? end - 1 : end;
}

} // namespace

bool isDirectionFormatting(char32_t character)
{
    return (character >= 0x202A && character <= 0x202E) || (character >= 0x2066 && character <= 0x2069);
}

QString shownLine(const QString& text, qsizetype longest)
{
    LineBuilder line(longest);
    const qsizetype scanned = std::min(text.size(), mostScanned);
    for (qsizetype position = 0; position < scanned && !line.isFull();) {
        const char32_t character = UnicodeText::codePointAt(text, position);
        position += QChar::requiresSurrogates(character) ? 2 : 1;
        line.add(character);
    }
    return line.take(scanned == text.size());
}

QString shownFileName(const QString& name)
{
    if (name.size() <= longestShownLine)
        return shownLine(name);
    return shownLine(name.left(longestShownLine / 2)) + ellipsis
           + shownLine(name.right(longestShownLine / 4));
}

QString shownToolTip(const QString& text)
{
    QString shown = shownLine(text);
    if (shown.size() <= widestToolTip)
        return shown;
    QStringList lines;
    for (qsizetype from = 0; from < shown.size();) {
        const qsizetype end = lineEnd(shown, from);
        lines.append(shown.sliced(from, end - from));
        from = end < shown.size() && shown.at(end) == u' ' ? end + 1 : end;
    }
    return lines.join(u'\n');
}

QString shownParagraph(QString text)
{
    for (QChar& character : text) {
        const bool isControl = character.category() == QChar::Other_Control && character != u'\t';
        if (isControl || isDirectionFormatting(character.unicode()))
            character = wordJoiner;
    }
    return text;
}

} // namespace orvia
