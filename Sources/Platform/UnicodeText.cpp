#include "Platform/UnicodeText.h"

namespace orvia::UnicodeText {

QString canonical(const QString& text)
{
    return text.normalized(QString::NormalizationForm_D);
}

QString lowerCased(const QString& text)
{
    return text.toLower().replace(u'ς', u'σ');
}

bool standsAlone(const QString& text, qsizetype position)
{
    // Whether such a code unit is joined depends on its two neighbours alone.
    const qsizetype start = qMax(qsizetype(0), position - 2);
    const QString window = text.mid(start, position - start + 3);
    QTextBoundaryFinder boundaries(QTextBoundaryFinder::Grapheme, window);
    boundaries.setPosition(position - start);
    if (position > 0 && !boundaries.isAtBoundary())
        return false;
    boundaries.setPosition(position - start + 1);
    return boundaries.isAtBoundary();
}

char32_t codePointAt(QStringView text, qsizetype position)
{
    const QChar unit = text.at(position);
    if (unit.isHighSurrogate() && position + 1 < text.size() && text.at(position + 1).isLowSurrogate())
        return QChar::surrogateToUcs4(unit, text.at(position + 1));
    return unit.unicode();
}

char32_t lastCharacter(const QString& text)
{
    QTextBoundaryFinder boundaries(QTextBoundaryFinder::Grapheme, text);
    boundaries.toEnd();
    return codePointAt(text, qMax(qsizetype(0), boundaries.toPreviousBoundary()));
}

bool isWhiteSpace(char32_t codePoint)
{
    // QChar::isSpace is the White_Space property.
    return QChar::isSpace(codePoint);
}

bool isLetterOrNumber(char32_t codePoint)
{
    return QChar::isLetterOrNumber(codePoint);
}

SearchableText::SearchableText(const QString& text)
    : m_form(canonical(text))
{
}

bool SearchableText::isBoundary(qsizetype position) const
{
    if (position == 0 || position == m_form.size())
        return true;
    if (!m_boundaries)
        m_boundaries.emplace(QTextBoundaryFinder::Grapheme, m_form);
    m_boundaries->setPosition(position);
    return m_boundaries->isAtBoundary();
}

qsizetype SearchableText::indexOf(QStringView what, qsizetype from) const
{
    for (qsizetype found = m_form.indexOf(what, from); found >= 0; found = m_form.indexOf(what, found + 1)) {
        if (isBoundary(found) && isBoundary(found + what.size()))
            return found;
    }
    return -1;
}

bool startsWith(const QString& text, const QString& prefix)
{
    if (!text.startsWith(prefix))
        return false;
    if (prefix.isEmpty() || prefix.size() == text.size())
        return true;
    // What comes before a place and the one code point after it decide whether it is a boundary.
    const qsizetype end = prefix.size();
    const qsizetype next = codePointAt(text, end) > 0xFFFF ? 2 : 1;
    const QString window = text.left(end + next);
    QTextBoundaryFinder boundaries(QTextBoundaryFinder::Grapheme, window);
    boundaries.setPosition(end);
    return boundaries.isAtBoundary();
}

namespace {

/// A text in a form in which canonically equivalent characters and letter cases are equal, which knows of
/// every place in it from where in the original it came.
struct FoldedText {
    explicit FoldedText(const QString& text)
    {
        QTextBoundaryFinder characters(QTextBoundaryFinder::Grapheme, text);
        form.reserve(text.size());
        origins.reserve(static_cast<std::size_t>(text.size()) + 1);
        qsizetype start = 0;
        while (start < text.size()) {
            const qsizetype end = characters.toNextBoundary();
            if (end < 0)
                break;
            const QString folded = canonical(canonical(text.sliced(start, end - start)).toCaseFolded());
            form += folded;
            origins.push_back(start);
            origins.insert(origins.end(), static_cast<std::size_t>(qMax(qsizetype(0), folded.size() - 1)),
                           -1);
            start = end;
        }
        origins.push_back(text.size());
    }

    /// The place in the original, or -1 inside a character.
    qsizetype origin(qsizetype position) const { return origins[static_cast<std::size_t>(position)]; }

    QString form;
    std::vector<qsizetype> origins;
};

} // namespace

std::vector<Range> occurrences(const QString& text, const QString& what)
{
    std::vector<Range> ranges;
    const QString wanted = FoldedText(what).form;
    if (wanted.isEmpty())
        return ranges;
    const FoldedText folded(text);
    qsizetype from = 0;
    for (;;) {
        const qsizetype found = folded.form.indexOf(wanted, from);
        if (found < 0)
            return ranges;
        const qsizetype start = folded.origin(found);
        const qsizetype end = folded.origin(found + wanted.size());
        if (start >= 0 && end >= 0) {
            ranges.push_back({start, end - start});
            from = found + wanted.size();
        } else {
            from = found + 1;
        }
    }
}

} // namespace orvia::UnicodeText
