#pragma once

#include <QFont>
#include <QRectF>
#include <QString>
#include <QTextLayout>

#include <memory>
#include <vector>

class QPainter;

namespace orvia {

/// A plain text broken into lines of one height, with selection. Paragraphs are laid out one by one, each in
/// the direction of its own text.
///
/// Only a bounded beginning of a very long text is laid out; @c isCut tells, and @c layOut with a larger
/// limit shows more. Positions are UTF-16 code units of @c text.
class BubbleText {
public:
    /// How much of a text is laid out unless asked for more, in code units.
    static constexpr qsizetype defaultLimit = 12000;

    struct Style {
        QFont font;
        int lineHeight = 0;
        Qt::Alignment alignment = Qt::AlignLeading;
    };

    /// A half-open range of positions; empty when both are equal.
    struct Selection {
        qsizetype anchor = 0;
        qsizetype cursor = 0;

        qsizetype start() const { return std::min(anchor, cursor); }
        qsizetype end() const { return std::max(anchor, cursor); }
        bool isEmpty() const { return anchor == cursor; }
    };

    /// Carriage returns before line feeds are dropped from @p text, and nothing else.
    BubbleText(const QString& text, Style style);

    /// Breaks the text at @p width.
    void layOut(qreal width, qsizetype limit = defaultLimit);

    const QString& text() const { return m_text; }
    /// How many code units are laid out.
    qsizetype shownLength() const { return m_shownLength; }
    bool isCut() const { return m_shownLength < m_text.size(); }
    /// Width of the longest line, and all lines' height.
    QSizeF size() const { return m_size; }
    int lineCount() const { return m_lineCount; }

    /// Paints the lines that meet @p clip with the text's corner at @p origin.
    void paint(QPainter& painter, const QPointF& origin, const QRectF& clip, const Selection& selection,
               const QColor& color, const QColor& selectionColor) const;

    /// The position between two characters that is nearest to @p point, which is relative to the text's
    /// corner.
    qsizetype positionAt(const QPointF& point) const;
    /// Where the caret stands at @p position, relative to the text's corner.
    QRectF caretRect(qsizetype position) const;
    qsizetype nextPosition(qsizetype position, bool word) const;
    qsizetype previousPosition(qsizetype position, bool word) const;
    /// The position one line up or down, and the ends of the line at @p position.
    qsizetype verticalPosition(qsizetype position, int lines) const;
    qsizetype lineStart(qsizetype position) const;
    qsizetype lineEnd(qsizetype position) const;
    /// The word at @p position, the run of white space if there is none.
    Selection wordAt(qsizetype position) const;
    QString selectedText(const Selection& selection) const;

private:
    struct Paragraph {
        qsizetype start = 0;
        qreal top = 0;
        std::unique_ptr<QTextLayout> layout;
    };

    void appendParagraph(qsizetype start, QStringView text, qreal width);
    void alignLines(qreal width);
    const Paragraph& paragraphAt(qsizetype position) const;
    const Paragraph& paragraphAtHeight(qreal y) const;
    QTextLine lineAt(const Paragraph& paragraph, qsizetype position) const;
    qsizetype cutPosition(qsizetype limit) const;

    QString m_text;
    Style m_style;
    std::vector<Paragraph> m_paragraphs;
    QSizeF m_size;
    qsizetype m_shownLength = 0;
    int m_lineCount = 0;
};

} // namespace orvia
