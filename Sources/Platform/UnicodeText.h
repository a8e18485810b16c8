#pragma once

#include <QString>
#include <QTextBoundaryFinder>

#include <optional>
#include <vector>

/// Text questions that count user-perceived characters (extended grapheme clusters, UAX #29) and compare by
/// canonical equivalence (UAX #15). Positions and lengths are UTF-16 code units, as everywhere in Qt.
namespace orvia::UnicodeText {

/// Part of a text, in code units.
struct Range {
    qsizetype start = 0;
    qsizetype length = 0;

    friend bool operator==(const Range&, const Range&) = default;
};

/// The canonical decomposition (NFD). Two texts are canonically equivalent exactly when these are equal.
QString canonical(const QString& text);

/// Full lower-casing without a locale, with the final and the medial form of sigma as one letter: which of
/// them is right depends on what follows, and in a text that is still being typed nobody knows that.
QString lowerCased(const QString& text);

/// Whether the code unit at @p position is a character of its own: nothing before it and nothing after it,
/// such as a combining mark, makes it part of a larger one. For code units that no rule joins by themselves,
/// such as "@", "/" and the space.
bool standsAlone(const QString& text, qsizetype position);

/// The code point that begins at @p position.
char32_t codePointAt(QStringView text, qsizetype position);
/// The first code point of the character that ends at the end of @p text, which is not empty.
char32_t lastCharacter(const QString& text);

/// Whether the code point has the White_Space property.
bool isWhiteSpace(char32_t codePoint);
/// Whether the code point is a letter or has a numeric value or category.
bool isLetterOrNumber(char32_t codePoint);

/// A text prepared for repeated searches. Preparing costs time in proportion to its length, a search too.
class SearchableText {
public:
    explicit SearchableText(const QString& text);

    /// The canonical form, to which all positions refer.
    const QString& form() const { return m_form; }
    /// Whether a character begins or ends at @p position.
    bool isBoundary(qsizetype position) const;
    /// Where @p what, in canonical form and not empty, next occurs as a run of whole characters; -1 if
    /// nowhere.
    qsizetype indexOf(QStringView what, qsizetype from = 0) const;

private:
    QString m_form;
    mutable std::optional<QTextBoundaryFinder> m_boundaries; ///< made when a candidate is first examined
};

/// Whether @p text begins with the characters of @p prefix; both are in canonical form.
bool startsWith(const QString& text, const QString& prefix);

/// Every occurrence of @p what in @p text, letter case aside, from the start and without overlap. None for an
/// empty @p what. The ranges hold whole characters of @p text.
std::vector<Range> occurrences(const QString& text, const QString& what);

} // namespace orvia::UnicodeText
