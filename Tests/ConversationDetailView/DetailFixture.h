#pragma once

#include "../Session/SessionFixture.h"
#include "Views/ConversationDetailView/ConversationDetailView.h"

#include <QUrl>

namespace orvia::test {

/// A conversation's column over a session that is signed in, in a window of a fixed size.
class DetailFixture : public SessionFixture {
protected:
    DetailFixture();
    ~DetailFixture() override;

    /// Signs in with @p conversation in the inbox and @p messages as its thread.
    void signInWith(const Conversation& conversation, std::vector<Message> messages);
    /// Shows the column and waits until its thread has been loaded.
    ConversationDetailView& open(const QSize& size = {550, 700});
    TranscriptView& transcript() { return view->transcript(); }

    /// Delivers live events, then lets the view catch up.
    void receive(const std::vector<Message>& messages);
    void settle();
    /// Scripts a new answer for the thread and loads it again.
    void reload(std::vector<Message> messages);

    /// @p count messages, one minute apart, of both sides in turn.
    static std::vector<Message> conversationOf(int count, qsizetype bodyLength = 60);
    static Message messageWith(const Attachment& attachment, MessageSender sender = MessageSender::visitor);
    /// The rows' names in order.
    QStringList spokenRows();

    Conversation conversation = makeConversation(u"c1"_s);
    QList<QUrl> openedURLs;
    std::function<void(const QUrl&)> picked; ///< set while the file picker is open
    std::unique_ptr<ConversationDetailView> view;
};

} // namespace orvia::test
