#pragma once

#include "../Session/SessionFixture.h"
#include "Views/ConversationDetailView/ConversationDetailView.h"

#include <QUrl>

namespace orvia::test {

/// A conversation's column over a session that is signed in, in a window of a fixed size.
class DetailFixture : public SessionFixture {
protected:
    DetailFixture()
    {
        timings.typingClear = std::chrono::seconds(30);
        timings.previewClear = std::chrono::seconds(30);
    }

    /// Signs in with the conversation in the inbox and @p messages as its thread.
    void signInWith(const std::vector<Message>& messages)
    {
        scriptInbox({conversation});
        signIn();
        service.always("GET", threadPath, answerOf(ConversationDetailResponse{conversation, {messages}}));
        service.always("GET", "/v1/agent/canned", answerOf(CannedResponsesResponse{}));
        session->setSelectedConversationId(conversation.id);
    }
    /// Shows the column and waits until its thread has been loaded.
    void open(const QSize& size = {550, 700})
    {
        ConversationDetailView::Environment environment;
        environment.now = [this] { return clock; };
        environment.openURL = [this](const QUrl& url) { openedURLs.append(url); };
        environment.pickFile = [this](QWidget*, std::function<void(const QUrl&)> done) {
            picked = std::move(done);
        };
        view = std::make_unique<ConversationDetailView>(*session, conversation.id, environment);
        view->resize(size);
        view->show();
        EXPECT_TRUE(waitUntil([&] { return !service.requests("GET", "/v1/agent/canned").empty(); }));
        settle();
    }
    TranscriptView& transcript() { return view->transcript(); }

    static void settle()
    {
        // One turn delivers what is queued, the next one the view's coalesced refresh and its painting.
        for (int i = 0; i < 3; ++i)
            QCoreApplication::processEvents();
    }
    /// Delivers a live event, then lets the view catch up.
    void receive(const Message& message)
    {
        deliver(message);
        settle();
    }
    /// The visitor or a teammate types in the conversation.
    void type(const QString& from, const QString& preview, const QString& agentName = {})
    {
        SocketEvent event;
        event.type = u"typing"_s;
        event.conversationId = conversation.id;
        event.from = from;
        event.preview = preview;
        event.agentId = u"a2"_s;
        event.agentName = agentName;
        session->handle(event);
        settle();
    }
    /// Scripts a new answer for the thread and loads it again.
    void reload(const std::vector<Message>& messages)
    {
        service.answer("GET", threadPath, answerOf(ConversationDetailResponse{conversation, {messages}}));
        runTask(session->loadConversation(conversation.id));
        settle();
    }

    /// @p count messages, one minute apart, of both sides in turn.
    static std::vector<Message> conversationOf(int count, qsizetype bodyLength = 60)
    {
        std::vector<Message> messages;
        for (int i = 0; i < count; ++i) {
            const MessageSender sender = i % 3 == 0 ? MessageSender::agent : MessageSender::visitor;
            QString body = u"Message %1 "_s.arg(i);
            while (body.size() < bodyLength)
                body += u"lorem ipsum "_s;
            messages.push_back(makeMessage(u"m%1"_s.arg(i), u"c1"_s, sender, body));
            messages.back().createdAt = minutesAgo(count - i);
        }
        return messages;
    }
    /// The rows' names in order.
    QStringList spokenRows()
    {
        QStringList rows;
        for (qsizetype i = 0; i < transcript().rowCount(); ++i)
            rows.append(transcript().row(i).spokenName());
        return rows;
    }

    const QByteArray threadPath = "/v1/agent/conversations/c1";
    Conversation conversation = makeConversation(u"c1"_s);
    QList<QUrl> openedURLs;
    std::function<void(const QUrl&)> picked; ///< set while the file picker is open
    std::unique_ptr<ConversationDetailView> view;
};

} // namespace orvia::test
