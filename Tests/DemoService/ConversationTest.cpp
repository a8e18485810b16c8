#include "DemoFixture.h"

#include <QNetworkRequest>

namespace orvia::test {

using testing::ElementsAre;

class ConversationTest : public DemoTest {
protected:
    const Conversation& helen() { return service.thread(u"helen-brandt"_s).conversation; }
    const Message& lastMessage() { return service.thread(u"helen-brandt"_s).messages.back(); }
};

TEST_F(ConversationTest, RepliesAndNotes)
{
    const auto reply = runTask(client(u"dana"_s).sendMessage(u"helen-brandt"_s, u" Hello 👋\n"_s, false, {}));
    ASSERT_TRUE(reply.value) << reply.errorMessage().toStdString();
    EXPECT_EQ(reply.value->body, u"Hello 👋"_s);
    EXPECT_EQ(reply.value->sender, MessageSender::agent);
    EXPECT_EQ(reply.value->agentId, u"dana"_s);
    EXPECT_EQ(reply.value->via, MessageVia::chat);
    EXPECT_EQ(lastMessage(), *reply.value);
    EXPECT_EQ(helen().lastMessagePreview, u"Hello 👋"_s);
    EXPECT_EQ(helen().visitorUnread, 1);
    EXPECT_EQ(helen().agentUnread, 0);

    const auto note = runTask(
        client(u"dana"_s).sendMessage(u"helen-brandt"_s, u"@Mara @Mara"_s, true, {u"mara"_s, u"mara"_s}));
    ASSERT_TRUE(note.value);
    EXPECT_EQ(note.value->sender, MessageSender::note);
    EXPECT_EQ(note.value->mentions, QStringList{u"mara"_s});
    EXPECT_FALSE(note.value->via);
    EXPECT_EQ(helen().visitorUnread, 1) << "the visitor does not see notes";
}

TEST_F(ConversationTest, AVisitorWhoWritesAgainReopensTheConversation)
{
    const auto& conversation = service.thread(u"tim-berger"_s).conversation;
    service.desk().snooze(service.thread(u"tim-berger"_s), now + std::chrono::hours(1));
    service.postAsVisitor(u"tim-berger"_s, u"Noch etwas"_s, MessageVia::email);
    EXPECT_EQ(conversation.status, ConversationStatus::open);
    EXPECT_FALSE(conversation.snoozedUntil);
    EXPECT_EQ(conversation.agentUnread, 1);
}

TEST_F(ConversationTest, AttachmentsComeBackAsTheyWereSent)
{
    QByteArray picture("\x89PNG\r\n\r\n--orvia-\0\xff", 19);
    const auto sent = runTask(client(u"dana"_s).uploadAttachment(u"helen-brandt"_s, u"Bild \"eins\" é.png"_s,
                                                                 u"image/png"_s, picture, false));
    ASSERT_TRUE(sent.value) << sent.errorMessage().toStdString();
    const Attachment attachment = sent.value->attachment.value();
    EXPECT_EQ(attachment.name, u"Bild _eins_ é.png"_s);
    EXPECT_EQ(attachment.mime, u"image/png"_s);
    EXPECT_EQ(attachment.size, picture.size());
    EXPECT_EQ(attachment.kind, AttachmentKind::image);
    EXPECT_EQ(sent.value->sender, MessageSender::agent);
    EXPECT_EQ(helen().lastMessagePreview, attachment.name);
    EXPECT_EQ(request("GET", *attachment.url, std::nullopt, {}).body.bytes(), QByteArrayView(picture));

    const auto note = runTask(client(u"dana"_s).uploadAttachment(u"helen-brandt"_s, u"empty"_s,
                                                                 u"text/plain"_s, QByteArray(), true));
    ASSERT_TRUE(note.value) << note.errorMessage().toStdString();
    EXPECT_EQ(note.value->sender, MessageSender::note);
    EXPECT_EQ(note.value->attachment->kind, AttachmentKind::file);
    EXPECT_EQ(note.value->attachment->size, 0);
}

TEST_F(ConversationTest, AttachmentsAreLimitedToTenMebibytes)
{
    const auto upload = [this](qsizetype size) {
        return runTask(client().uploadAttachment(
            u"helen-brandt"_s, u"big.bin"_s, u"application/octet-stream"_s, QByteArray(size, 'x'), false));
    };
    EXPECT_EQ(upload(10 * 1024 * 1024).value->attachment->size, 10 * 1024 * 1024);
    EXPECT_EQ(upload(10 * 1024 * 1024 + 1).error, APIError(u"Attachments are limited to 10MB."_s, 413));
    EXPECT_EQ(upload(11 * 1024 * 1024).error->status, 413);
}

TEST_F(ConversationTest, FailuresOnDemand)
{
    service.failNext(u"/teammates"_s, demo::Answer{502, "<html>", "text/html"});
    EXPECT_EQ(runTask(client().teammates()).error, APIError(u"Request failed (502)"_s, 502));
    EXPECT_TRUE(runTask(client().teammates()).value) << "one failure, one refusal";

    service.failNext(u"/teammates"_s, std::nullopt, 100);
    const auto broken = runTask(client().teammates());
    ASSERT_TRUE(broken.error);
    EXPECT_TRUE(broken.error->message.startsWith(u"Network error: "_s))
        << broken.errorMessage().toStdString();
    EXPECT_FALSE(broken.error->status);
    service.repair();
    EXPECT_TRUE(runTask(client().teammates()).value);

    service.holdAnswers(true);
    const auto held = startTask(client().closeConversation(u"helen-brandt"_s));
    ASSERT_TRUE(waitUntil([&] { return service.heldAnswers() == 1; }));
    EXPECT_EQ(helen().status, ConversationStatus::closed);
    EXPECT_FALSE(held->finished());
    service.holdAnswers(false);
    EXPECT_TRUE(waitUntil([&] { return held->finished(); }));

    const quint16 port = service.port();
    service.stop();
    EXPECT_FALSE(
        runTask(APIClient(QUrl(u"http://127.0.0.1:%1"_s.arg(port)), std::nullopt, &session).me()).value);
    ASSERT_TRUE(service.listen(port));
    EXPECT_TRUE(runTask(client().me()).value);
}

} // namespace orvia::test
