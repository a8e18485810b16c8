#pragma once

#include "Models/Message.h"
#include "Session/Session.h"
#include "Views/ConversationDetailView/Transcript/TranscriptRow.h"

namespace orvia {

/// The rows of one conversation's transcript: its messages, then its rating, the visitor's typing and a
/// teammate's draft. Rows are made when asked for. What lies behind the messages and who has seen what is as
/// of the last @c refresh.
class TranscriptContent {
public:
    /// @p session outlives the content.
    TranscriptContent(const Session& session, QString conversationId);

    /// The state on which the rows depend. Rows of messages only change with what is listed here, with their
    /// neighbours, and with the names of agents.
    struct State {
        qsizetype messageCount = 0;
        std::optional<QString> seenMessageId;
        std::optional<Rating> rating;
        QString typingPreview; ///< empty when there is none
        bool isTyping = false;
        std::optional<AgentDraft> agentPreview;

        friend bool operator==(const State&, const State&) = default;
    };

    void refresh();
    const State& state() const { return m_state; }

    qsizetype rowCount() const { return m_state.messageCount + static_cast<qsizetype>(m_tail.size()); }
    TranscriptRow row(qsizetype index) const;
    QString rowId(qsizetype index) const;
    /// The last row with this id, -1 when there is none.
    qsizetype indexOf(const QString& id) const;
    /// The row whose end the list scrolls to; -1 when there is nothing to do.
    qsizetype scrollTarget() const;

    /// A cheap guess of a row's height from the length of its text.
    struct Measure {
        int bodyCharactersPerLine = 1;
        int noteCharactersPerLine = 1;
        int lineHeight = 18;
    };
    int estimatedHeight(qsizetype index, const Measure& measure) const;

private:
    const std::vector<Message>& thread() const { return m_session.messages().thread(m_conversationId); }
    const Message* message(qsizetype index) const;
    TranscriptRow messageRow(const Message* previous, const Message& current, const Message* next) const;
    AttachmentView attachmentView(const Attachment& attachment) const;
    bool hasCaption(const Message& current, const Message* next) const;
    std::vector<TranscriptRow> tailRows() const;

    const Session& m_session;
    const QString m_conversationId;
    State m_state;
    std::vector<TranscriptRow> m_tail;
};

} // namespace orvia
