#include "ComposerFixture.h"

#include "Views/ConversationDetailView/Composer/PickedFile.h"

#include <sys/stat.h>

namespace orvia::test {

using namespace std::chrono_literals;
using testing::ElementsAre;
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
    void accept()
    {
        service.always("POST", attachmentsPath,
                       answerOf(MessageResponse{makeMessage(u"m1"_s, u"c1"_s, MessageSender::agent)}));
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
    composer->upload(file(u"lid \"new\" ä.png"_s));
    EXPECT_TRUE(composer->isUploading());
    EXPECT_FALSE(button(u"attachButton"_s).isEnabled());
    EXPECT_TRUE(button(u"attachButton"_s).isBusy());
    EXPECT_TRUE(button(u"sendButton"_s).isEnabled()) << "an upload does not block sending";
    ASSERT_TRUE(waitUntil([&] { return held->isWaiting(); }));
    EXPECT_THAT(body(),
                HasSubstr("name=\"file\"; filename=\"lid _new_ ä.png\"\r\nContent-Type: image/png\r\n"));
    EXPECT_THAT(body(), Not(HasSubstr("name=\"note\"")));

    const Message message = makeMessage(u"m1"_s, u"c1"_s, MessageSender::agent);
    deliver(message);
    held->answer(answerOf(MessageResponse{message}));
    ASSERT_TRUE(finishes());
    EXPECT_EQ(session->messages().thread(u"c1"_s).size(), 1U);
    EXPECT_TRUE(button(u"attachButton"_s).isEnabled());
    EXPECT_EQ(text(), u"draft"_s);
}

TEST_F(UploadTest, TakesTheNoteFlagAtTheMomentOfThePick)
{
    open();
    const auto held = service.hold("POST", attachmentsPath);
    click(button(u"noteModeButton"_s));
    composer->upload(file(u"a.txt"_s));
    click(button(u"noteModeButton"_s));
    held->answer(answerOf(MessageResponse{makeMessage(u"m1"_s, u"c1"_s, MessageSender::note)}));
    ASSERT_TRUE(finishes());
    EXPECT_THAT(body(), HasSubstr("name=\"note\"\r\n\r\ntrue\r\n"));
}

TEST_F(UploadTest, AcceptsExactlyTheLimitAndAnEmptyFile)
{
    open();
    accept();
    composer->upload(file(u"limit.bin"_s, QByteArray(10'485'760, 'x')));
    ASSERT_TRUE(finishes());
    EXPECT_GT(body().size(), 10'485'760U);
    composer->upload(file(u"empty"_s, {}));
    ASSERT_TRUE(finishes());
    EXPECT_THAT(body(1), HasSubstr("Content-Type: application/octet-stream\r\n\r\n\r\n--"));
    EXPECT_FALSE(session->banner());
}

TEST_F(UploadTest, RefusesWhatIsTooLargeOrCannotBeRead)
{
    open();
    QDir(directory.path()).mkdir(u"folder.png"_s);
    const QByteArray pipe = QFile::encodeName(directory.filePath(u"pipe"_s));
    ASSERT_EQ(::mkfifo(pipe.constData(), 0600), 0);
    const QString unreadable = u"Could not read the selected file."_s;
    const struct {
        QUrl location;
        QString banner;
    } table[] = {
        {file(u"large.bin"_s, QByteArray(10'485'761, 'x')), u"Attachments are limited to 10MB."_s},
        {QUrl::fromLocalFile(directory.filePath(u"missing.png"_s)), unreadable},
        {QUrl::fromLocalFile(directory.filePath(u"folder.png"_s)), unreadable},
        {QUrl::fromLocalFile(directory.filePath(u"pipe"_s)), unreadable},
        {QUrl(u"sftp://host/file.png"_s), unreadable},
        {QUrl(), unreadable},
    };
    for (const auto& [location, banner] : table) {
        session->showBanner(u"before"_s);
        composer->upload(location);
        EXPECT_EQ(session->banner(), banner) << location.toString().toStdString();
        EXPECT_FALSE(composer->isUploading());
    }
    spinFor(20ms);
    EXPECT_TRUE(service.requests("POST", attachmentsPath).empty());
}

TEST_F(UploadTest, AFailedRequestOnlyRaisesTheBanner)
{
    open();
    const struct {
        ScriptedAnswer answer;
        QString banner;
    } table[] = {
        {refusal(401, "Not yours"), u"Not yours"_s},
        {refusal(413, "Too much"), u"Too much"_s},
        {ScriptedAnswer::json("{}"), u"Could not decode server response"_s},
    };
    for (const auto& [answer, banner] : table) {
        service.answer("POST", attachmentsPath, answer);
        composer->upload(file(u"a.txt"_s));
        ASSERT_TRUE(finishes());
        EXPECT_EQ(session->banner(), banner);
    }
    EXPECT_TRUE(session->token()) << "only the identity request signs out";
    EXPECT_EQ(session->messages().thread(u"c1"_s).size(), 0U);
}

TEST_F(UploadTest, StaysBusyUntilTheLastOfTwoUploadsHasEnded)
{
    open();
    const auto first = service.hold("POST", attachmentsPath);
    const auto second = service.hold("POST", attachmentsPath);
    composer->upload(file(u"a.txt"_s));
    composer->upload(file(u"b.txt"_s));
    second->answer(refusal(500, "second"));
    ASSERT_TRUE(waitUntil([&] { return session->banner() == u"second"_s; }));
    EXPECT_TRUE(composer->isUploading());
    first->answer(refusal(500, "first"));
    EXPECT_TRUE(finishes());
}

TEST_F(UploadTest, GoesOnForItsOwnConversationWhenTheComposerIsGone)
{
    open();
    const auto held = service.hold("POST", attachmentsPath);
    composer->upload(file(u"a.txt"_s));
    ASSERT_TRUE(waitUntil([&] { return held->isWaiting(); }));
    window.reset();
    session->setSelectedConversationId(u"c2"_s);
    held->answer(answerOf(MessageResponse{makeMessage(u"m1"_s, u"c1"_s, MessageSender::agent)}));
    EXPECT_TRUE(waitUntil([&] { return session->messages().thread(u"c1"_s).size() == 1; }));
    EXPECT_EQ(session->messages().thread(u"c2"_s).size(), 0U);
}

TEST_F(UploadTest, ABusyAttachButtonDoesNotKeepTheFocus)
{
    open();
    accept();
    int asked = 0;
    QObject::connect(composer, &ConversationComposer::attachRequested, composer, [&] { ++asked; });
    button(u"attachButton"_s).setFocus(Qt::TabFocusReason);
    press(Qt::Key_Return);
    EXPECT_EQ(asked, 1);
    composer->upload(file(u"a.txt"_s));
    EXPECT_TRUE(field().hasFocus());
    click(button(u"attachButton"_s));
    EXPECT_EQ(asked, 1);
    EXPECT_TRUE(finishes());
}

TEST(PickedFileTest, FindsTheMediaTypeByTheExtensionAlone)
{
    const QString unknown = u"application/octet-stream"_s;
    const struct {
        QString name;
        QString type;
    } table[] = {
        {u"a.png"_s, u"image/png"_s},
        {u"A.B.PDF"_s, u"application/pdf"_s},
        {u"photo.JPG"_s, u"image/jpeg"_s},
        {u"a.tar.gz"_s, u"application/gzip"_s},
        {u"notes.txt"_s, u"text/plain"_s},
        {u"README"_s, unknown},
        {u"Makefile"_s, unknown},
        {u"a."_s, unknown},
        {u"a.qqqq"_s, unknown},
        {u".bashrc"_s, unknown},
        {QString(), unknown},
    };
    for (const auto& [name, type] : table)
        EXPECT_EQ(mimeTypeForFileName(name), type) << name.toStdString();
}

} // namespace

} // namespace orvia::test
