#include "Views/ConversationDetailView/Transcript/TranscriptContent.h"

#include "ComposerLogic/ReadReceipt.h"
#include "Platform/Formats.h"
#include "Theme/Theme.h"
#include "Views/ConversationDetailView/Transcript/BubbleText.h"
#include "Views/ConversationDetailView/TranscriptRules.h"

#include <QCoreApplication>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

constexpr int dividerHeight = 34;
constexpr int bubblePadding = 15;
constexpr int noteExtra = 34;
constexpr int captionHeight = 16;
constexpr int pictureHeight = 151;
constexpr int fileCardHeight = 48;

QString tr(const char* text)
{
    return QCoreApplication::translate("ConversationDetailView", text);
}

TranscriptRow::Kind rowKind(MessageSender sender)
{
    switch (sender) {
    case MessageSender::visitor:
        return TranscriptRow::Kind::visitor;
    case MessageSender::agent:
        return TranscriptRow::Kind::agent;
    case MessageSender::system:
        return TranscriptRow::Kind::system;
    case MessageSender::note:
        return TranscriptRow::Kind::note;
    }
    Q_UNREACHABLE();
}

bool hasBubble(const Message* message)
{
    return message && (message->sender == MessageSender::visitor || message->sender == MessageSender::agent);
}

/// Whether the bubbles of two neighbours belong to one run, captions aside.
bool isRun(const Message* upper, const Message* lower)
{
    return hasBubble(upper) && hasBubble(lower) && upper->sender == lower->sender
           && !TranscriptRules::showsTimeDivider(upper, *lower);
}

} // namespace

TranscriptContent::TranscriptContent(const Session& session, QString conversationId)
    : m_session(session)
    , m_conversationId(std::move(conversationId))
{
}

void TranscriptContent::refresh()
{
    const Conversation* conversation = m_session.conversations().find(m_conversationId);
    m_state.messageCount = static_cast<qsizetype>(thread().size());
    m_state.seenMessageId =
        ReadReceipt::seenMessageId(thread(), conversation ? conversation->visitorLastReadAt : std::nullopt);
    m_state.rating = conversation ? conversation->rating : std::nullopt;
    m_state.typingPreview = m_session.typingPreviews().value(m_conversationId);
    m_state.isTyping = m_session.typingConversations().contains(m_conversationId);
    const auto draft = m_session.agentPreviews().constFind(m_conversationId);
    m_state.agentPreview =
        draft != m_session.agentPreviews().constEnd() ? std::optional(*draft) : std::nullopt;
    m_tail = tailRows();
}

std::vector<TranscriptRow> TranscriptContent::tailRows() const
{
    std::vector<TranscriptRow> rows;
    if (m_state.rating) {
        TranscriptRow row{
            .kind = TranscriptRow::Kind::rating, .id = u"rating"_s, .topSpacing = Spacing::large};
        row.header = tr("Rated %1/5").arg(QString::number(m_state.rating->score));
        const QString comment = m_state.rating->comment.value_or(QString());
        if (!comment.isEmpty())
            row.body = u"“"_s + comment + u"”"_s;
        rows.push_back(std::move(row));
    }
    if (!m_state.typingPreview.isEmpty()) {
        TranscriptRow row{.kind = TranscriptRow::Kind::typingPreview, .id = u"typing"_s};
        row.header = tr("typing");
        row.body = m_state.typingPreview;
        rows.push_back(std::move(row));
    } else if (m_state.isTyping) {
        TranscriptRow row{.kind = TranscriptRow::Kind::typingIndicator, .id = u"typing"_s};
        row.header = tr("Visitor is typing…");
        rows.push_back(std::move(row));
    }
    if (m_state.agentPreview) {
        TranscriptRow row{.kind = TranscriptRow::Kind::agentPreview, .id = u"agentTyping"_s};
        const QString name = m_state.agentPreview->agentName;
        row.header = name.isEmpty() ? tr("A teammate is typing") : tr("%1 is typing").arg(name);
        row.body = m_state.agentPreview->text;
        rows.push_back(std::move(row));
    }
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (rows[i].kind != TranscriptRow::Kind::rating && (i > 0 || m_state.messageCount > 0))
            rows[i].topSpacing = Spacing::medium;
    }
    return rows;
}

const Message* TranscriptContent::message(qsizetype index) const
{
    const std::vector<Message>& messages = thread();
    const bool inside =
        index >= 0 && index < m_state.messageCount && index < static_cast<qsizetype>(messages.size());
    return inside ? &messages[static_cast<std::size_t>(index)] : nullptr;
}

TranscriptRow TranscriptContent::row(qsizetype index) const
{
    if (index >= m_state.messageCount)
        return m_tail[static_cast<std::size_t>(index - m_state.messageCount)];
    // A thread that has just been replaced by a shorter one shows its new rows with the next refresh.
    const Message* current = message(index);
    return current ? messageRow(message(index - 1), *current, message(index + 1)) : TranscriptRow();
}

QString TranscriptContent::rowId(qsizetype index) const
{
    if (index >= m_state.messageCount)
        return m_tail[static_cast<std::size_t>(index - m_state.messageCount)].id;
    const Message* current = message(index);
    return current ? current->id : QString();
}

qsizetype TranscriptContent::indexOf(const QString& id) const
{
    for (qsizetype index = rowCount() - 1; index >= 0; --index) {
        if (rowId(index) == id)
            return index;
    }
    return -1;
}

qsizetype TranscriptContent::scrollTarget() const
{
    const bool typing = m_state.isTyping || !m_state.typingPreview.isEmpty();
    if (m_state.agentPreview || typing)
        return rowCount() - 1;
    return m_state.messageCount - 1;
}

bool TranscriptContent::hasCaption(const Message& current, const Message* next) const
{
    return TranscriptRules::showsEmailCaption(current, next) || current.id == m_state.seenMessageId;
}

TranscriptRow TranscriptContent::messageRow(const Message* previous, const Message& current,
                                            const Message* next) const
{
    TranscriptRow row{.kind = rowKind(current.sender), .id = current.id};
    const bool dividerShown = TranscriptRules::showsTimeDivider(previous, current);
    if (dividerShown)
        row.divider = Formats::timeOfDay(*current.createdAt);
    row.topSpacing = TranscriptRules::topSpacing(previous, current, dividerShown);
    row.body = current.body;
    if (current.sender == MessageSender::system)
        return row;
    if (current.attachment)
        row.attachment = attachmentView(*current.attachment);
    if (current.sender == MessageSender::note) {
        row.header = TranscriptRules::noteCaption(m_session.agentName(current.agentId));
        row.mentionsMe =
            m_session.agent() && current.mentions && current.mentions->contains(m_session.agent()->id);
        return row;
    }
    row.showsEmailCaption = TranscriptRules::showsEmailCaption(current, next);
    row.showsSeenCaption = current.id == m_state.seenMessageId;
    row.joinsPrevious = isRun(previous, &current) && !hasCaption(*previous, &current);
    row.joinsNext = isRun(&current, next) && !row.hasCaption();
    return row;
}

AttachmentView TranscriptContent::attachmentView(const Attachment& attachment) const
{
    const bool image = attachment.kind == AttachmentKind::image;
    AttachmentView view{.kind = image ? AttachmentKind::image : AttachmentKind::file};
    view.name = attachment.name.value_or(QString());
    if (view.name.isEmpty())
        view.name = image ? tr("Image") : tr("Attachment");
    if (attachment.size)
        view.size = Formats::fileSize(*attachment.size);
    view.url = TranscriptRules::resolvedURL(attachment, m_session.baseURL());
    return view;
}

int TranscriptContent::estimatedHeight(qsizetype index, const Measure& measure) const
{
    const Message* current = message(index);
    if (!current)
        return dividerHeight;
    const Message* previous = message(index - 1);
    const bool divider = TranscriptRules::showsTimeDivider(previous, *current);
    int height = TranscriptRules::topSpacing(previous, *current, divider) + (divider ? dividerHeight : 0);
    const bool wide = current->sender == MessageSender::note || current->sender == MessageSender::system;
    if (!current->body.isEmpty()) {
        const QStringView shown = QStringView(current->body).left(BubbleText::defaultLimit);
        const qsizetype perLine = wide ? measure.noteCharactersPerLine : measure.bodyCharactersPerLine;
        const qsizetype lines = (shown.size() + perLine - 1) / perLine + shown.count(u'\n');
        height += static_cast<int>(lines) * measure.lineHeight;
    }
    if (current->sender == MessageSender::system)
        return height;
    if (current->sender == MessageSender::note)
        height += noteExtra;
    else if (!current->body.isEmpty())
        height += bubblePadding;
    if (current->attachment)
        height += current->attachment->kind == AttachmentKind::image ? pictureHeight : fileCardHeight;
    return height + (TranscriptRules::showsEmailCaption(*current, message(index + 1)) ? captionHeight : 0);
}

} // namespace orvia
