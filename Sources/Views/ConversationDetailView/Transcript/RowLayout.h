#pragma once

#include "Theme/Theme.h"
#include "Views/ConversationDetailView/Transcript/BubbleText.h"
#include "Views/ConversationDetailView/Transcript/TranscriptContent.h"
#include "Views/ConversationDetailView/Transcript/TranscriptRow.h"

#include <QRect>

#include <optional>

class QPainter;

namespace orvia {

class AttachmentImages;

/// One row of the transcript broken into lines and boxes at a given width, and its painting. Coordinates are
/// relative to the row's top left corner.
class RowLayout {
public:
    /// What in a row can be pointed at, focused and pressed.
    enum class Part { none, body, showMore, attachment };

    struct Setting {
        int width = 0;
        Qt::LayoutDirection direction = Qt::LeftToRight;
        qreal devicePixelRatio = 1;
        qsizetype bodyLimit = BubbleText::defaultLimit;
        AttachmentImages* images = nullptr; ///< outlives the layout
    };

    /// What the pointer and the keyboard add to a row's look.
    struct Look {
        BubbleText::Selection selection;
        Part focused = Part::none;
        Part hovered = Part::none;
        Part pressed = Part::none;
        std::optional<qsizetype> caret;
    };

    RowLayout(TranscriptRow row, const Setting& setting);

    const TranscriptRow& row() const { return m_row; }
    int height() const { return m_height; }
    /// The text of bubble, note, system line or comment; null when there is none.
    const BubbleText* body() const { return m_body ? &*m_body : nullptr; }
    QPointF bodyOrigin() const { return m_bodyOrigin; }
    /// The box of a part, empty when the row has none.
    QRect rect(Part part) const;
    Part partAt(const QPoint& point) const;
    /// The parts that the keyboard stops at, from top to bottom.
    std::vector<Part> stops() const;
    static QString partName(Part part, const TranscriptRow& row);

    void paint(QPainter& painter, const QPoint& origin, const QRect& clip, const Look& look) const;

    /// The figures by which heights of rows that were never shown are guessed at @p width.
    static TranscriptContent::Measure measure(int width);

private:
    struct Label {
        QRect rect;
        QString text;
        TextRole role;
        ColorRole color;
        Qt::Alignment alignment = Qt::AlignCenter;
        Qt::TextElideMode elide = Qt::ElideRight;
    };

    int contentWidth() const;
    QRect placed(int y, const QSize& size, bool trailing, int inset = 0) const;
    void addLine(const QString& text, TextRole role, ColorRole color, int height, Qt::Alignment alignment,
                 int inset = 0);
    void layOutBubble();
    void layOutNote();
    void layOutCentred(TextRole role, int lineHeight);
    void layOutTyping();
    void layOutBody(TextRole role, int lineHeight, int width, Qt::Alignment alignment, bool italic = false);
    void layOutShowMore(bool trailing, int inset);
    void layOutAttachment(bool trailing, int inset, int maxWidth);
    void layOutFileCard(const AttachmentView& file, bool trailing, int inset, int maxWidth);
    Qt::Alignment side(bool trailing) const;

    void paintBubble(QPainter& painter) const;
    void paintAttachment(QPainter& painter, const Look& look) const;
    void paintPicture(QPainter& painter) const;
    void paintLabel(QPainter& painter, const Label& label) const;
    void paintRing(QPainter& painter, Part part) const;
    ColorRole bodyColor() const;

    TranscriptRow m_row;
    Setting m_setting;
    int m_height = 0;
    std::vector<Label> m_labels;
    std::optional<BubbleText> m_body;
    QPointF m_bodyOrigin;
    QRect m_bubble;
    QRect m_showMore;
    QRect m_attachment;
    QRect m_mentionIcon;
};

} // namespace orvia
