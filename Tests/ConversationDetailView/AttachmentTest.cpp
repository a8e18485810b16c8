#include "DetailFixture.h"

#include <QBuffer>
#include <QImage>

namespace orvia::test {
namespace {

using Part = TranscriptView::Part;

class AttachmentTest : public DetailFixture {
protected:
    static ScriptedAnswer picture(const QSize& size)
    {
        QImage image(size, QImage::Format_RGB32);
        image.fill(Qt::darkGreen);
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        EXPECT_TRUE(image.save(&buffer, "PNG"));
        return ScriptedAnswer::json(bytes);
    }

    static Message messageWith(const QString& id, AttachmentKind kind, const std::optional<QString>& url)
    {
        Message message = makeMessage(id, u"c1"_s, MessageSender::visitor, {});
        message.attachment = Attachment{{}, u"lid.png"_s, {}, {}, kind, url};
        return message;
    }
};

TEST_F(AttachmentTest, showsAPictureWithoutTellingWhoAsks)
{
    const auto held = service.hold("GET", "/lid.png");
    signInWith({messageWith(u"a"_s, AttachmentKind::image, u"/lid.png"_s)});
    open();
    const auto place = [this] { return transcript().partRect({0, Part::attachment}); };
    EXPECT_EQ(place().size(), QSize(220, 147));
    ASSERT_TRUE(waitUntil([&] { return held->isWaiting(); }));
    held->answer(picture({880, 880}));
    EXPECT_TRUE(waitUntil([&] { return place().size() == QSize(180, 180); }));
    EXPECT_EQ(transcript().viewport()->grab().toImage().pixelColor(place().center()), QColor(Qt::darkGreen));
    for (const ReceivedRequest& request : service.requests("GET", "/lid.png")) {
        EXPECT_FALSE(request.header("Authorization"));
        EXPECT_FALSE(request.header("Cookie"));
    }
}

TEST_F(AttachmentTest, asksAndOpensWebAddressesOnly)
{
    AttachmentImages images;
    for (const char* text :
         {"file:///etc/passwd", "data:image/png;base64,AA", "qrc:/icons/orvia.svg", "ftp://x/y"})
        EXPECT_EQ(images.request(QUrl(QString::fromLatin1(text)), 1), AttachmentImages::State::failed)
            << text;

    signInWith({messageWith(u"a"_s, AttachmentKind::file, u"file:///etc/passwd"_s),
                messageWith(u"b"_s, AttachmentKind::file, {})});
    open();
    transcript().activate({1, Part::attachment});
    EXPECT_FALSE(session->banner());
    transcript().activate({0, Part::attachment});
    EXPECT_TRUE(session->banner());
    EXPECT_TRUE(openedURLs.isEmpty());
}

TEST_F(AttachmentTest, doesNotMoveTheReaderWhenAPictureArrives)
{
    std::vector<Message> thread = conversationOf(60);
    thread[50].attachment = messageWith({}, AttachmentKind::image, u"/lid.png"_s).attachment;
    signInWith(thread);
    const auto held = service.hold("GET", "/lid.png");
    open();
    ASSERT_TRUE(waitUntil([&] { return held->isWaiting(); }));
    EXPECT_TRUE(transcript().isFollowing());
    const int last = transcript().rowRect(59).top();
    held->answer(picture({100, 20}));
    ASSERT_TRUE(waitUntil([&] { return transcript().partRect({50, Part::attachment}).height() == 44; }));
    EXPECT_EQ(transcript().rowRect(59).top(), last);
}

} // namespace
} // namespace orvia::test
