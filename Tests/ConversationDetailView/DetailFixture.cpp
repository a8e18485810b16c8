#include "DetailFixture.h"

#include "Theme/Theme.h"

#include <QApplication>

namespace orvia::test {

DetailFixture::DetailFixture()
{
    // One font and one style on every machine.
    static const bool themed = (Theme::shared().apply(*qApp), true);
    Q_UNUSED(themed)
    conversation.visitor.name = u"Helen Brandt"_s;
    conversation.visitor.email = u"helen.brandt@example.de"_s;
}

DetailFixture::~DetailFixture() = default;

void DetailFixture::signInWith(const Conversation& shown, std::vector<Message> messages)
{
    conversation = shown;
    scriptInbox({conversation});
    signIn();
    service.always("GET", "/v1/agent/conversations/" + conversation.id.toUtf8(),
                   answerOf(ConversationDetailResponse{conversation, {std::move(messages)}}));
    service.always("GET", "/v1/agent/canned", answerOf(CannedResponsesResponse{}));
    session->setSelectedConversationId(conversation.id);
}

ConversationDetailView& DetailFixture::open(const QSize& size)
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
    return *view;
}

void DetailFixture::settle()
{
    // One turn delivers what is queued, the next one the view's coalesced refresh and its painting.
    for (int i = 0; i < 3; ++i)
        QCoreApplication::processEvents();
}

void DetailFixture::receive(const std::vector<Message>& messages)
{
    for (const Message& message : messages)
        deliver(message);
    settle();
}

void DetailFixture::reload(std::vector<Message> messages)
{
    service.answer("GET", "/v1/agent/conversations/" + conversation.id.toUtf8(),
                   answerOf(ConversationDetailResponse{conversation, {std::move(messages)}}));
    runTask(session->loadConversation(conversation.id));
    settle();
}

std::vector<Message> DetailFixture::conversationOf(int count, qsizetype bodyLength)
{
    std::vector<Message> messages;
    for (int i = 0; i < count; ++i) {
        const MessageSender sender = i % 3 == 0 ? MessageSender::agent : MessageSender::visitor;
        QString body = u"Message %1 "_s.arg(i);
        while (body.size() < bodyLength)
            body += u"lorem ipsum "_s;
        Message message = makeMessage(u"m%1"_s.arg(i), u"c1"_s, sender, body);
        message.createdAt = minutesAgo(count - i);
        messages.push_back(std::move(message));
    }
    return messages;
}

Message DetailFixture::messageWith(const Attachment& attachment, MessageSender sender)
{
    Message message = makeMessage(u"withFile"_s, u"c1"_s, sender, {});
    message.attachment = attachment;
    return message;
}

QStringList DetailFixture::spokenRows()
{
    QStringList rows;
    for (qsizetype i = 0; i < transcript().rowCount(); ++i)
        rows.append(transcript().row(i).spokenName());
    return rows;
}

} // namespace orvia::test
