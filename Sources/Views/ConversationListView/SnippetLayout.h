#pragma once

#include "Platform/UnicodeText.h"

#include <QFont>
#include <QTextLayout>

#include <vector>

class QPainter;

namespace orvia {

/// A snippet laid out in a given width: at most two lines, the second one elided where more follows, with the
/// occurrences of a query in the accent colour and semibold. In the dark appearance they stand on tiles.
class SnippetLayout {
public:
    SnippetLayout(const QString& snippet, const QString& query, int width, Qt::LayoutDirection direction);

    int width() const { return m_width; }
    /// The height in pixels.
    int height() const { return m_lineHeight * m_layout.lineCount(); }
    /// The text that is shown, elided or not.
    QString shownText() const { return m_layout.text(); }
    const std::vector<UnicodeText::Range>& hits() const { return m_hits; }
    void paint(QPainter& painter, const QPointF& topLeft) const;

private:
    bool fits(const QString& text);
    void elide(const QString& text);
    void setFormats(qsizetype length);
    void paintTiles(QPainter& painter, const QPointF& topLeft) const;

    int m_width;
    int m_lineHeight;
    std::vector<UnicodeText::Range> m_hits;
    QTextLayout m_layout;
};

} // namespace orvia
