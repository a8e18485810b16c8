#include "Platform/ShownText.h"
#include "Views/ConversationDetailView/Transcript/AttachmentImages.h"
#include "Views/ConversationDetailView/Transcript/RowLayout.h"

#include <QPainter>
#include <QPainterPath>
#include <QStyle>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

constexpr int fileIcon = 20;
constexpr int fileCardLeading = 12;
constexpr int pictureIcon = 24;
constexpr int mentionIcon = 13;
constexpr int noteRule = 2;
constexpr qreal ringWidth = 2;
constexpr qreal ringGap = 2;
constexpr qreal dash = 4;
constexpr qreal dashGap = 3;

struct Corners {
    qreal topLeft = 0;
    qreal topRight = 0;
    qreal bottomRight = 0;
    qreal bottomLeft = 0;
};

QPainterPath roundedPath(const QRectF& rect, const Corners& corners)
{
    QPainterPath path;
    path.moveTo(rect.left() + corners.topLeft, rect.top());
    const auto corner = [&path](const QPointF& at, qreal radius, qreal angle) {
        if (radius > 0)
            path.arcTo(QRectF(at, QSizeF(2 * radius, 2 * radius)), angle, -90);
        else
            path.lineTo(at);
    };
    corner({rect.right() - 2 * corners.topRight, rect.top()}, corners.topRight, 90);
    corner({rect.right() - 2 * corners.bottomRight, rect.bottom() - 2 * corners.bottomRight},
           corners.bottomRight, 0);
    corner({rect.left(), rect.bottom() - 2 * corners.bottomLeft}, corners.bottomLeft, 270);
    corner({rect.left(), rect.top()}, corners.topLeft, 180);
    path.closeSubpath();
    return path;
}

QPainterPath roundedPath(const QRectF& rect, qreal radius)
{
    return roundedPath(rect, Corners{radius, radius, radius, radius});
}

} // namespace

ColorRole RowLayout::bodyColor() const
{
    switch (m_row.kind) {
    case TranscriptRow::Kind::visitor:
        return ColorRole::visitorBubbleText;
    case TranscriptRow::Kind::agent:
        return ColorRole::agentBubbleText;
    case TranscriptRow::Kind::note:
        return ColorRole::noteText;
    case TranscriptRow::Kind::typingPreview:
        return ColorRole::textPrimary;
    default:
        return ColorRole::textSecondary;
    }
}

void RowLayout::paint(QPainter& painter, const QPoint& origin, const QRect& clip, const Look& look) const
{
    painter.save();
    painter.translate(origin);
    painter.setRenderHint(QPainter::Antialiasing);
    paintBubble(painter);
    if (!m_attachment.isEmpty())
        paintAttachment(painter, look);
    if (look.hovered == Part::showMore && !m_showMore.isEmpty())
        painter.fillPath(roundedPath(m_showMore, Radius::button), Theme::color(ColorRole::hover));
    for (const Label& label : m_labels)
        paintLabel(painter, label);
    if (!m_mentionIcon.isEmpty())
        Theme::drawIcon(painter, m_mentionIcon, u"at"_s, mentionIcon, ColorRole::noteCaption);
    if (m_body) {
        const bool onAgent = m_row.kind == TranscriptRow::Kind::agent;
        const ColorRole selected = onAgent ? ColorRole::textSelectionOnAgent : ColorRole::textSelection;
        // The marks that somebody piled up on a letter must not reach the messages around.
        painter.save();
        painter.setClipRect(rect(Part::body).adjusted(-Spacing::small, 0, Spacing::small, 0),
                            Qt::IntersectClip);
        m_body->paint(painter, m_bodyOrigin, QRectF(clip.translated(-origin)), look.selection,
                      Theme::color(bodyColor()), Theme::color(selected));
        painter.restore();
        if (look.caret)
            painter.fillRect(m_body->caretRect(*look.caret).translated(m_bodyOrigin),
                             Theme::color(bodyColor()));
    }
    paintRing(painter, look.focused);
    painter.restore();
}

void RowLayout::paintBubble(QPainter& painter) const
{
    if (m_bubble.isEmpty())
        return;
    const QRectF rect = m_bubble;
    const bool mirrored = m_setting.direction == Qt::RightToLeft;
    const bool onRight = m_row.isTrailing() != mirrored;
    const qreal top = m_row.joinsPrevious ? Radius::joinedCorner : Radius::bubble;
    const qreal bottom = m_row.joinsNext ? Radius::joinedCorner : Radius::bubble;
    const Corners corners{onRight ? Radius::bubble : top, onRight ? top : Radius::bubble,
                          onRight ? bottom : Radius::bubble, onRight ? Radius::bubble : bottom};
    switch (m_row.kind) {
    case TranscriptRow::Kind::visitor:
        painter.fillPath(roundedPath(rect, corners), Theme::color(ColorRole::visitorBubble));
        break;
    case TranscriptRow::Kind::agent:
        painter.fillPath(roundedPath(rect, corners), Theme::color(ColorRole::agentBubble));
        break;
    case TranscriptRow::Kind::note: {
        const qreal radius = Radius::highlight;
        const Corners trailing = mirrored ? Corners{radius, 0, 0, radius} : Corners{0, radius, radius, 0};
        painter.fillPath(roundedPath(rect, trailing), Theme::color(ColorRole::noteFill));
        const qreal ruleX = mirrored ? rect.right() - noteRule : rect.left();
        painter.fillRect(QRectF(ruleX, rect.top(), noteRule, rect.height()),
                         Theme::color(ColorRole::noteAccent));
        break;
    }
    case TranscriptRow::Kind::typingPreview: {
        QPen pen(Theme::color(ColorRole::draftOutline), 1);
        pen.setDashPattern({dash, dashGap});
        pen.setCapStyle(Qt::FlatCap);
        painter.strokePath(roundedPath(rect.adjusted(0.5, 0.5, -0.5, -0.5), Radius::bubble - 0.5), pen);
        break;
    }
    case TranscriptRow::Kind::agentPreview:
        painter.fillPath(roundedPath(rect, Radius::bubble), Theme::color(ColorRole::hairlineStrong));
        painter.fillPath(roundedPath(rect.adjusted(1, 1, -1, -1), Radius::bubble - 1),
                         Theme::color(ColorRole::draftFill));
        break;
    default:
        break;
    }
}

void RowLayout::paintAttachment(QPainter& painter, const Look& look) const
{
    if (m_row.attachment->kind == AttachmentKind::image)
        return paintPicture(painter);
    const QRectF rect = m_attachment;
    ColorRole fill = ColorRole::window;
    if (look.pressed == Part::attachment)
        fill = ColorRole::pressed;
    else if (look.hovered == Part::attachment)
        fill = ColorRole::hover;
    painter.fillPath(roundedPath(rect, Radius::card), Theme::color(ColorRole::hairlineStrong));
    painter.fillPath(roundedPath(rect.adjusted(1, 1, -1, -1), Radius::card - 1), Theme::color(fill));
    const QRect icon(m_attachment.left() + fileCardLeading + 1, m_attachment.top(), fileIcon,
                     m_attachment.height());
    const QRect placedIcon = QStyle::visualRect(m_setting.direction, m_attachment, icon);
    Theme::drawIcon(painter, placedIcon, u"file"_s, fileIcon, ColorRole::icon);
}

void RowLayout::paintPicture(QPainter& painter) const
{
    const QPainterPath shape = roundedPath(m_attachment, Radius::card);
    const QImage image = m_row.attachment->url ? m_setting.images->image(*m_row.attachment->url) : QImage();
    painter.fillPath(shape, Theme::color(ColorRole::tag));
    if (image.isNull()) {
        const bool waits = m_row.attachment->url && m_setting.images->isLoading(*m_row.attachment->url);
        QRect icon = m_attachment;
        if (!waits) {
            // Colour alone would not tell a picture that failed from one that is still on its way.
            const QRect name =
                m_attachment.adjusted(Spacing::medium, m_attachment.height() / 2 + Spacing::large,
                                      -Spacing::medium, -Spacing::small);
            paintLabel(painter, {name, shownFileName(m_row.attachment->name), TextRole::micro,
                                 ColorRole::textSecondary, Qt::AlignHCenter | Qt::AlignTop, Qt::ElideMiddle});
            icon.adjust(0, 0, 0, -Spacing::large);
        }
        Theme::drawIcon(painter, icon, u"image"_s, pictureIcon, ColorRole::iconFaint);
        return;
    }
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.setClipPath(shape);
    const QSize shown = m_setting.images->displaySize(*m_row.attachment->url).boundedTo(m_attachment.size());
    QRect area(QPoint(), shown);
    area.moveCenter(m_attachment.center());
    painter.drawImage(area, image);
    painter.restore();
}

void RowLayout::paintLabel(QPainter& painter, const Label& label) const
{
    const QFont font = Theme::font(label.role);
    painter.setFont(font);
    painter.setPen(Theme::color(label.color));
    const QString text = QFontMetrics(font).elidedText(label.text, label.elide, label.rect.width());
    painter.save();
    painter.setClipRect(label.rect.adjusted(-Spacing::hair, -Spacing::hair, Spacing::hair, Spacing::hair),
                        Qt::IntersectClip);
    painter.drawText(label.rect, static_cast<int>(label.alignment) | Qt::TextSingleLine, text);
    painter.restore();
}

void RowLayout::paintRing(QPainter& painter, Part part) const
{
    const QRect area = rect(part);
    if (area.isEmpty())
        return;
    const qreal out = ringGap + ringWidth / 2;
    qreal radius = Radius::button;
    if (part == Part::attachment)
        radius = Radius::card;
    else if (part == Part::body && !m_bubble.isEmpty())
        radius = m_row.kind == TranscriptRow::Kind::note ? Radius::highlight : Radius::bubble;
    painter.strokePath(roundedPath(QRectF(area).adjusted(-out, -out, out, out), radius + out),
                       QPen(Theme::color(ColorRole::focusRing), ringWidth));
}

} // namespace orvia
