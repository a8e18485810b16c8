#include "DetailFixture.h"

#include <QBuffer>
#include <QImage>
#include <QScrollBar>

namespace orvia::test {
namespace {

using Part = TranscriptView::Part;

class AttachmentTest : public DetailFixture {
protected:
    static QByteArray picture(const QSize& size, const char* format = "PNG")
    {
        QImage image(size, QImage::Format_RGB32);
        image.fill(Qt::darkGreen);
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        EXPECT_TRUE(image.save(&buffer, format));
        return bytes;
    }

    static Attachment imageAt(const QString& url)
    {
        return {{}, u"lid.png"_s, {}, {}, AttachmentKind::image, url};
    }

    void openWith(const QString& url)
    {
        signInWith(conversation, {messageWith(imageAt(url))});
        open();
    }

    QSize shownSize() { return transcript().partRect({0, Part::attachment}).size(); }
    QColor centre()
    {
        const QPoint point = transcript().partRect({0, Part::attachment}).center();
        return transcript().viewport()->grab().toImage().pixelColor(point);
    }
};

TEST_F(AttachmentTest, showsAPictureWithoutTellingWhoAsks)
{
    const auto held = service.hold("GET", "/lid.png");
    openWith(u"/lid.png"_s);
    EXPECT_EQ(shownSize(), QSize(220, 147));
    ASSERT_TRUE(waitUntil([&] { return held->isWaiting(); }));
    held->answer(ScriptedAnswer::json(picture({880, 880})));
    EXPECT_TRUE(waitUntil([&] { return shownSize() == QSize(180, 180); }));
    EXPECT_EQ(centre(), QColor(Qt::darkGreen));
    for (const ReceivedRequest& request : service.requests("GET", "/lid.png")) {
        EXPECT_FALSE(request.header("Authorization"));
        EXPECT_FALSE(request.header("Cookie"));
    }
}

TEST_F(AttachmentTest, keepsThePlaceholderForWhatIsNoPicture)
{
    const struct {
        const char* name;
        ScriptedAnswer answer;
    } answers[] = {
        {"missing", refusal(404, "Not found")},
        {"a page", ScriptedAnswer::json("<html></html>")},
        {"vectors", ScriptedAnswer::json("<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>")},
        {"cut off", ScriptedAnswer::json(picture({100, 100}).left(60))},
        {"nothing", ScriptedAnswer::json("")},
    };
    for (const auto& item : answers) {
        SCOPED_TRACE(item.name);
        AttachmentImages images;
        const QUrl url = service.url().resolved(QUrl(u"/bad"_s));
        service.answer("GET", "/bad", item.answer);
        EXPECT_EQ(images.request(url, 1), AttachmentImages::State::loading);
        EXPECT_TRUE(waitUntil([&] { return !images.isLoading(url); }));
        EXPECT_EQ(images.request(url, 1), AttachmentImages::State::failed);
        EXPECT_TRUE(images.displaySize(url).isEmpty());
    }
}

TEST_F(AttachmentTest, refusesMoreBytesAndPixelsThanItsLimits)
{
    AttachmentImages::Limits limits;
    limits.bytes = 4096;
    limits.pixels = 100 * 100;
    AttachmentImages images(limits, nullptr);
    const auto end = [&](const QByteArray& path, const QByteArray& body) {
        service.answer("GET", path, ScriptedAnswer::json(body));
        const QUrl url = service.url().resolved(QUrl(QString::fromLatin1(path)));
        images.request(url, 1);
        EXPECT_TRUE(waitUntil([&] { return !images.isLoading(url); }));
        return images.request(url, 1);
    };
    EXPECT_EQ(end("/ok", picture({100, 100})), AttachmentImages::State::loaded);
    EXPECT_EQ(end("/wide", picture({101, 100})), AttachmentImages::State::failed);
    EXPECT_EQ(end("/long", picture({10, 10}) + QByteArray(5000, '\0')), AttachmentImages::State::failed);
}

TEST_F(AttachmentTest, asksWebServersOnly)
{
    AttachmentImages images;
    for (const char* text :
         {"file:///etc/passwd", "data:image/png;base64,AA", "qrc:/icons/orvia.svg", "ftp://x/y"})
        EXPECT_EQ(images.request(QUrl(QString::fromLatin1(text)), 1), AttachmentImages::State::failed)
            << text;
}

TEST_F(AttachmentTest, opensWebAddressesOnly)
{
    Message local = messageWith({{}, {}, {}, {}, AttachmentKind::file, u"file:///etc/passwd"_s});
    Message nothing = messageWith({{}, {}, {}, {}, AttachmentKind::file, {}});
    nothing.id = u"nothing"_s;
    signInWith(conversation, {local, nothing});
    open();
    EXPECT_EQ(transcript().row(1).attachment->name, u"Attachment"_s);
    transcript().activate({1, Part::attachment});
    EXPECT_FALSE(session->banner());
    transcript().activate({0, Part::attachment});
    EXPECT_TRUE(session->banner());
    EXPECT_TRUE(openedURLs.isEmpty());
}

TEST_F(AttachmentTest, doesNotMoveTheReaderWhenAPictureArrives)
{
    std::vector<Message> thread = conversationOf(60);
    thread[50].attachment = imageAt(u"/lid.png"_s);
    signInWith(conversation, thread);
    const auto held = service.hold("GET", "/lid.png");
    open();
    ASSERT_TRUE(waitUntil([&] { return held->isWaiting(); }));
    EXPECT_EQ(transcript().verticalScrollBar()->value(), transcript().verticalScrollBar()->maximum());
    const int last = transcript().rowRect(59).top();
    held->answer(ScriptedAnswer::json(picture({100, 20})));
    ASSERT_TRUE(waitUntil([&] { return transcript().partRect({50, Part::attachment}).height() == 44; }));
    EXPECT_EQ(transcript().rowRect(59).top(), last);
}

} // namespace
} // namespace orvia::test
