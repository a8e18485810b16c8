#include "Views/ConversationDetailView/Transcript/RowLayout.h"

#include "Platform/ShownText.h"
#include "Views/ConversationDetailView/Transcript/AttachmentImages.h"

#include <QCoreApplication>
#include <QFontMetrics>
#include <QStyle>

#include <cmath>

namespace orvia {

namespace {

constexpr int sidePadding = 16;
constexpr int bubbleSides = 12;
constexpr int bubbleTop = 7;
constexpr int bubbleBottom = 8;
constexpr int labelLine = 14;
constexpr int systemLine = 16;
constexpr int commentLine = 18;
constexpr int dividerTop = 12;
constexpr int dividerBottom = 8;
constexpr int noteRule = 2;
constexpr int noteTop = 8;
constexpr int noteBottom = 9;
constexpr int noteHeaderGap = 3;
constexpr int mentionIcon = 13;
constexpr int attachmentGap = 4;
constexpr int fileCardHeight = 44;
constexpr int fileCardLeading = 12;
constexpr int fileCardTrailing = 14;
constexpr int fileIcon = 20;
constexpr int fileIconGap = 10;
constexpr QSize placeholder(220, 147);
constexpr QSize smallestPicture(44, 44);
constexpr double bubbleShare = 0.75;

QString tr(const char* text)
{
    return QCoreApplication::translate("ConversationDetailView", text);
}

int lineBox(TextRole role, int least)
{
    return std::max(least, QFontMetrics(Theme::font(role)).height());
}

int textWidth(TextRole role, const QString& text)
{
    return static_cast<int>(std::ceil(QFontMetricsF(Theme::font(role)).horizontalAdvance(shownLine(text))));
}

int maxBubbleWidth(int width)
{
    return std::max(static_cast<int>(bubbleShare * width), 4 * bubbleSides);
}

} // namespace

RowLayout::RowLayout(TranscriptRow row, const Setting& setting)
    : m_row(std::move(row))
    , m_setting(setting)
    , m_height(m_row.topSpacing)
{
    if (!m_row.divider.isEmpty()) {
        m_height += dividerTop;
        addLine(m_row.divider, TextRole::micro, ColorRole::textSecondary, labelLine, Qt::AlignCenter);
        m_height += dividerBottom;
    }
    switch (m_row.kind) {
    case TranscriptRow::Kind::visitor:
    case TranscriptRow::Kind::agent:
        layOutBubble();
        break;
    case TranscriptRow::Kind::note:
        layOutNote();
        break;
    case TranscriptRow::Kind::system:
        layOutCentred(TextRole::caption, systemLine);
        break;
    case TranscriptRow::Kind::rating:
        addLine(m_row.header, TextRole::bodyStrong, ColorRole::textPrimary, commentLine, Qt::AlignCenter);
        layOutCentred(TextRole::callout, commentLine);
        break;
    case TranscriptRow::Kind::typingPreview:
    case TranscriptRow::Kind::typingIndicator:
    case TranscriptRow::Kind::agentPreview:
        layOutTyping();
        break;
    }
}

TranscriptContent::Measure RowLayout::measure(int width)
{
    const QFontMetricsF metrics(Theme::font(TextRole::body));
    const qreal character = std::max<qreal>(1, metrics.averageCharWidth());
    const auto perLine = [character](int room) { return std::max(1, static_cast<int>(room / character)); };
    return {perLine(maxBubbleWidth(width) - 2 * bubbleSides),
            perLine(width - 2 * sidePadding - noteRule - 2 * bubbleSides), Theme::lineHeight(TextRole::body)};
}

int RowLayout::contentWidth() const
{
    return std::max(0, m_setting.width - 2 * sidePadding);
}

Qt::Alignment RowLayout::side(bool trailing) const
{
    const Qt::Alignment alignment = trailing ? Qt::AlignRight : Qt::AlignLeft;
    return QStyle::visualAlignment(m_setting.direction, alignment) | Qt::AlignVCenter;
}

QRect RowLayout::placed(int y, const QSize& size, bool trailing, int inset) const
{
    const int x = trailing ? m_setting.width - sidePadding - inset - size.width() : sidePadding + inset;
    return QStyle::visualRect(m_setting.direction, QRect(0, 0, m_setting.width, 0),
                              QRect(QPoint(x, y), size));
}

void RowLayout::addLine(const QString& text, TextRole role, ColorRole color, int height,
                        Qt::Alignment alignment, int inset)
{
    const int box = lineBox(role, height);
    const QRect rect = placed(m_height, QSize(contentWidth() - 2 * inset, box), false, inset);
    m_labels.push_back({rect, shownLine(text), role, color, alignment});
    m_height += box;
}

void RowLayout::layOutBody(TextRole role, int lineHeight, int width, Qt::Alignment alignment, bool italic)
{
    QFont font = Theme::font(role);
    font.setItalic(italic);
    m_body.emplace(m_row.body, BubbleText::Style{font, lineBox(role, lineHeight), alignment});
    m_body->layOut(std::max(1, width), m_setting.bodyLimit);
}

void RowLayout::layOutShowMore(bool trailing, int inset)
{
    if (!m_body || !m_body->isCut())
        return;
    const QString text = partName(Part::showMore, m_row);
    const QSize size(textWidth(TextRole::bodyMedium, text) + 2 * Spacing::small,
                     lineBox(TextRole::bodyMedium, Metric::fieldHeight));
    m_showMore = placed(m_height, size, trailing, inset);
    m_labels.push_back({m_showMore, text, TextRole::bodyMedium, ColorRole::textSecondary});
    m_height += size.height();
}

void RowLayout::layOutBubble()
{
    const bool trailing = m_row.isTrailing();
    const int widest = maxBubbleWidth(m_setting.width);
    const int top = m_height;
    if (!m_row.body.isEmpty()) {
        layOutBody(TextRole::body, Theme::lineHeight(TextRole::body), widest - 2 * bubbleSides,
                   Qt::AlignLeading);
        const QSize text = m_body->size().toSize();
        m_bubble = placed(m_height, text + QSize(2 * bubbleSides, bubbleTop + bubbleBottom), trailing);
        m_bodyOrigin = m_bubble.topLeft() + QPoint(bubbleSides, bubbleTop);
        m_height += m_bubble.height();
        layOutShowMore(trailing, 0);
    }
    if (m_row.attachment) {
        m_height += m_height > top ? attachmentGap : 0;
        layOutAttachment(trailing, 0, widest);
    }
    if (m_row.hasCaption()) {
        m_height += Spacing::hair;
        addLine(m_row.caption(), TextRole::caption, ColorRole::textSecondary, labelLine, side(trailing),
                bubbleSides);
    }
}

void RowLayout::layOutNote()
{
    const int top = m_height;
    const int room = contentWidth() - noteRule - 2 * bubbleSides;
    const int inset = noteRule + bubbleSides;
    m_height += noteTop;
    const int line = lineBox(TextRole::caption, labelLine);
    int captionRoom = room;
    if (m_row.mentionsMe) {
        const QString text = tr("Mentioned you");
        const int width = textWidth(TextRole::captionMedium, text);
        const QRect label = placed(m_height, QSize(width, line), true, bubbleSides);
        m_labels.push_back({label, text, TextRole::captionMedium, ColorRole::noteCaption, side(true)});
        m_mentionIcon =
            placed(m_height, QSize(mentionIcon, line), true, bubbleSides + width + Spacing::xSmall);
        captionRoom -= width + mentionIcon + Spacing::xSmall + Spacing::small;
    }
    const QRect caption = placed(m_height, QSize(std::max(0, captionRoom), line), false, inset);
    m_labels.push_back(
        {caption, shownLine(m_row.header), TextRole::caption, ColorRole::noteCaption, side(false)});
    m_height += line;
    if (!m_row.body.isEmpty()) {
        m_height += noteHeaderGap;
        layOutBody(TextRole::body, Theme::lineHeight(TextRole::body), room, Qt::AlignLeading);
        const QSize text = m_body->size().toSize();
        m_bodyOrigin = placed(m_height, text, false, inset).topLeft();
        m_height += text.height();
        layOutShowMore(false, inset - Spacing::small);
    }
    if (m_row.attachment) {
        m_height += attachmentGap;
        layOutAttachment(false, inset, room);
    }
    m_height += noteBottom;
    m_bubble = placed(top, QSize(contentWidth(), m_height - top), false);
}

void RowLayout::layOutCentred(TextRole role, int lineHeight)
{
    if (m_row.body.isEmpty())
        return;
    layOutBody(role, lineHeight, contentWidth(), Qt::AlignHCenter);
    const QSize text = m_body->size().toSize();
    m_bodyOrigin = QPointF((m_setting.width - text.width()) / 2, m_height);
    m_height += text.height();
    layOutShowMore(false, 0);
}

void RowLayout::layOutTyping()
{
    const bool trailing = m_row.isTrailing();
    if (m_row.kind == TranscriptRow::Kind::typingIndicator) {
        addLine(m_row.header, TextRole::caption, ColorRole::textSecondary, labelLine, side(false),
                bubbleSides);
        return;
    }
    addLine(m_row.header, TextRole::micro, ColorRole::textTertiary, labelLine, side(trailing), bubbleSides);
    m_height += Spacing::hair;
    const bool draft = m_row.kind == TranscriptRow::Kind::agentPreview;
    const int line = draft ? 1 : 0;
    const int padding = bubbleSides + line;
    layOutBody(TextRole::body, Theme::lineHeight(TextRole::body),
               maxBubbleWidth(m_setting.width) - 2 * padding, Qt::AlignLeading, !draft);
    const QSize text = m_body->size().toSize();
    m_bubble = placed(m_height, text + QSize(2 * padding, bubbleTop + bubbleBottom + 2 * line), trailing);
    m_bodyOrigin = m_bubble.topLeft() + QPoint(padding, bubbleTop + line);
    m_height += m_bubble.height();
    layOutShowMore(trailing, 0);
}

void RowLayout::layOutAttachment(bool trailing, int inset, int maxWidth)
{
    const AttachmentView& attachment = *m_row.attachment;
    if (attachment.kind != AttachmentKind::image)
        return layOutFileCard(attachment, trailing, inset, maxWidth);
    QSize size = placeholder;
    if (attachment.url) {
        m_setting.images->request(*attachment.url, m_setting.devicePixelRatio);
        const QSize known = m_setting.images->displaySize(*attachment.url);
        if (!known.isEmpty())
            size = known.expandedTo(smallestPicture);
    }
    if (size.width() > maxWidth)
        size = QSize(maxWidth, std::max(1, size.height() * maxWidth / size.width()));
    m_attachment = placed(m_height, size, trailing, inset);
    m_height += size.height();
}

void RowLayout::layOutFileCard(const AttachmentView& file, bool trailing, int inset, int maxWidth)
{
    const int nameLine = lineBox(TextRole::bodyMedium, commentLine);
    const int sizeLine = file.size.isEmpty() ? 0 : lineBox(TextRole::caption, labelLine);
    const int text = std::max(textWidth(TextRole::bodyMedium, shownFileName(file.name)),
                              textWidth(TextRole::caption, file.size));
    const int beside = fileCardLeading + fileIcon + fileIconGap + fileCardTrailing + 2;
    const QSize size(std::min(text + beside, maxWidth), std::max(fileCardHeight, nameLine + sizeLine + 12));
    m_attachment = placed(m_height, size, trailing, inset);

    const int textTop = m_attachment.top() + (size.height() - nameLine - sizeLine) / 2;
    const int lead = fileCardLeading + 1 + fileIcon + fileIconGap;
    const auto line = [&](int y, int height) {
        const QRect inner(m_attachment.left() + lead, y, size.width() - beside, height);
        return QStyle::visualRect(m_setting.direction, m_attachment, inner);
    };
    m_labels.push_back({line(textTop, nameLine), shownFileName(file.name), TextRole::bodyMedium,
                        ColorRole::textPrimary, side(false), Qt::ElideMiddle});
    if (sizeLine > 0) {
        m_labels.push_back({line(textTop + nameLine, sizeLine), file.size, TextRole::caption,
                            ColorRole::textSecondary, side(false)});
    }
    m_height += size.height();
}

QRect RowLayout::rect(Part part) const
{
    switch (part) {
    case Part::body:
        if (!m_body)
            return {};
        return m_bubble.isEmpty() ? QRect(m_bodyOrigin.toPoint(), m_body->size().toSize()) : m_bubble;
    case Part::showMore:
        return m_showMore;
    case Part::attachment:
        return m_attachment;
    case Part::none:
        break;
    }
    return {};
}

RowLayout::Part RowLayout::partAt(const QPoint& point) const
{
    for (const Part part : {Part::attachment, Part::showMore, Part::body}) {
        if (rect(part).contains(point))
            return part;
    }
    return Part::none;
}

std::vector<RowLayout::Part> RowLayout::stops() const
{
    std::vector<Part> parts;
    for (const Part part : {Part::body, Part::showMore, Part::attachment}) {
        if (!rect(part).isEmpty())
            parts.push_back(part);
    }
    return parts;
}

QString RowLayout::partName(Part part, const TranscriptRow& row)
{
    if (part == Part::showMore)
        return tr("Show More");
    if (part != Part::attachment || !row.attachment)
        return row.spokenName();
    const AttachmentView& attachment = *row.attachment;
    return attachment.size.isEmpty() ? attachment.name
                                     : attachment.name + QStringLiteral(", ") + attachment.size;
}

} // namespace orvia
