#include "ComposerFixture.h"

#include "Views/ConversationDetailView/Composer/PickedFile.h"

#include <sys/stat.h>

namespace orvia::test {

using namespace std::chrono_literals;
using testing::HasSubstr;

namespace {

class UploadTest : public ComposerFixture {
protected:
    UploadTest() { timings.bannerDismiss = 10s; }

    QUrl file(const QString& name, const QByteArray& bytes = "bytes")
    {
        const QString path = directory.filePath(name);
        QFile written(path);
        EXPECT_TRUE(written.open(QIODevice::WriteOnly) && written.write(bytes) == bytes.size())
            << path.toStdString();
        return QUrl::fromLocalFile(path);
    }
    static ScriptedAnswer accepted(const QString& id = u"m1"_s)
    {
        return answerOf(MessageResponse{makeMessage(id, u"c1"_s, MessageSender::agent)});
    }
    bool finishes()
    {
        return waitUntil([this] { return !composer->isUploading(); });
    }
    std::string body(std::size_t index = 0)
    {
        return bodyOf(service.requests("POST", attachmentsPath), index).toStdString();
    }
};

TEST_F(UploadTest, SendsTheFileAndMergesTheMessageOnce)
{
    open();
    const auto held = service.hold("POST", attachmentsPath);
    type(u"draft"_s);
    button(u"attachButton"_s).setFocus(Qt::TabFocusReason);
    composer->upload(file(u"lid \"new\" ä.png"_s));
    EXPECT_TRUE(composer->isUploading());
    EXPECT_FALSE(button(u"attachButton"_s).isEnabled());
    EXPECT_TRUE(field().hasFocus()) << "a busy button does not keep the focus";
    EXPECT_TRUE(button(u"sendButton"_s).isEnabled()) << "an upload does not block sending";
    ASSERT_TRUE(waitUntil([&] { return held->isWaiting(); }));
    EXPECT_THAT(body(),
                HasSubstr("name=\"file\"; filename=\"lid _new_ ä.png\"\r\nContent-Type: image/png\r\n"));
    EXPECT_THAT(body(), Not(HasSubstr("name=\"note\"")));

    deliver(makeMessage(u"m1"_s, u"c1"_s, MessageSender::agent));
    held->answer(accepted());
    ASSERT_TRUE(finishes());
    EXPECT_EQ(session->messages().thread(u"c1"_s).size(), 1U);
    EXPECT_TRUE(button(u"attachButton"_s).isEnabled());
    EXPECT_EQ(text(), u"draft"_s);

    // A note is what is picked in note mode, whatever the mode is later.
    const auto note = service.hold("POST", attachmentsPath);
    click(button(u"noteModeButton"_s));
    composer->upload(file(u"a.txt"_s));
    click(button(u"noteModeButton"_s));
    note->answer(accepted(u"m2"_s));
    ASSERT_TRUE(finishes());
    EXPECT_THAT(body(1), HasSubstr("name=\"note\"\r\n\r\ntrue\r\n"));
}

TEST_F(UploadTest, AcceptsTheLimitAndNothingAndRefusesMoreAndWhatCannotBeRead)
{
    open();
    QDir(directory.path()).mkdir(u"folder.png"_s);
    const QByteArray pipe = QFile::encodeName(directory.filePath(u"pipe"_s));
    ASSERT_EQ(::mkfifo(pipe.constData(), 0600), 0);
    const auto local = [this](const QString& name) { return QUrl::fromLocalFile(directory.filePath(name)); };
    for (const QUrl& location : {local(u"missing.png"_s), local(u"folder.png"_s), local(u"pipe"_s),
                                 QUrl(u"sftp://host/file.png"_s)}) {
        session->showBanner(u"before"_s);
        composer->upload(location);
        EXPECT_EQ(session->banner(), u"Could not read the selected file."_s);
    }
    composer->upload(file(u"large.bin"_s, QByteArray(10'485'761, 'x')));
    EXPECT_EQ(session->banner(), u"Attachments are limited to 10MB."_s);
    EXPECT_FALSE(composer->isUploading());

    service.always("POST", attachmentsPath, accepted());
    composer->upload(file(u"limit.bin"_s, QByteArray(10'485'760, 'x')));
    ASSERT_TRUE(finishes());
    EXPECT_GT(body().size(), 10'485'760U);
    composer->upload(file(u"empty"_s, {}));
    ASSERT_TRUE(finishes());
    EXPECT_THAT(body(1), HasSubstr("Content-Type: application/octet-stream\r\n\r\n\r\n--"));
    EXPECT_EQ(service.requests("POST", attachmentsPath).size(), 2U);
}

TEST_F(UploadTest, StaysBusyUntilTheLastOfTwoHasFailedAndOnlyRaisesTheBanner)
{
    open();
    const auto first = service.hold("POST", attachmentsPath);
    const auto second = service.hold("POST", attachmentsPath);
    composer->upload(file(u"a.txt"_s));
    composer->upload(file(u"b.txt"_s));
    second->answer(refusal(401, "Not yours"));
    ASSERT_TRUE(waitUntil([&] { return session->banner() == u"Not yours"_s; }));
    EXPECT_TRUE(session->token()) << "only the identity request signs out";
    EXPECT_TRUE(composer->isUploading());
    first->answer(ScriptedAnswer::json("{}"));
    EXPECT_TRUE(finishes());
    EXPECT_EQ(session->banner(), u"Could not decode server response"_s);
    EXPECT_EQ(session->messages().thread(u"c1"_s).size(), 0U);
}

TEST_F(UploadTest, WhatIsUnderWayGoesOnForItsConversationWhenTheComposerIsGone)
{
    open();
    const auto message = service.hold("POST", messagesPath);
    const auto attachment = service.hold("POST", attachmentsPath);
    type(u"Hello"_s);
    press(Qt::Key_Return);
    composer->upload(file(u"a.txt"_s));
    ASSERT_TRUE(waitUntil([&] { return message->isWaiting() && attachment->isWaiting(); }));
    window.reset();
    session->setSelectedConversationId(u"c2"_s);
    message->answer(accepted(u"m1"_s));
    attachment->answer(accepted(u"m2"_s));
    EXPECT_TRUE(waitUntil([&] { return session->messages().thread(u"c1"_s).size() == 2; }));
    EXPECT_EQ(session->messages().thread(u"c2"_s).size(), 0U);
}

TEST(PickedFileTest, FindsTheMediaTypeByTheExtensionAlone)
{
    EXPECT_EQ(mimeTypeForFileName(u"A.B.PDF"_s), u"application/pdf"_s);
    EXPECT_EQ(mimeTypeForFileName(u"a.tar.gz"_s), u"application/gzip"_s);
    for (const QString& name : {u"Makefile"_s, u"a."_s, u"a.qqqq"_s, u".bashrc"_s})
        EXPECT_EQ(mimeTypeForFileName(name), u"application/octet-stream"_s) << name.toStdString();
}

} // namespace

} // namespace orvia::test
