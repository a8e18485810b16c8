#include "Session/SessionFixture.h"
#include "Views/ConversationDetailView/Transcript/AttachmentImages.h"

#include <QBuffer>
#include <QFile>
#include <QImage>

#include <algorithm>

namespace orvia::test {
namespace {

/// A picture of one colour, which compresses to next to nothing whatever its size.
QByteArray picture(const QSize& size, const char* format, QImage::Format pixels = QImage::Format_RGB32)
{
    QImage image(size, pixels);
    image.fill(0);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(image.save(&buffer, format)) << format;
    return bytes;
}

/// A small BMP whose head says that it is @p edge wide and high.
QByteArray bitmap(qint32 edge)
{
    QByteArray bytes = picture({9, 9}, "BMP");
    memcpy(bytes.data() + 18, &edge, sizeof edge);
    memcpy(bytes.data() + 22, &edge, sizeof edge);
    return bytes;
}

/// By how many MiB the process grows at most while @p work is done.
int growth(const std::function<void()>& work)
{
    const auto peak = [] {
        QFile status(u"/proc/self/status"_s);
        EXPECT_TRUE(status.open(QIODevice::ReadOnly));
        const QByteArray text = status.readAll();
        return text.mid(text.indexOf("VmHWM:") + 6).simplified().split(' ').first().toInt() / 1024;
    };
    QFile references(u"/proc/self/clear_refs"_s);
    if (references.open(QIODevice::WriteOnly))
        references.write("5");
    references.close();
    const int before = peak();
    work();
    return peak() - before;
}

class HostilePictures : public SessionFixture {
protected:
    using State = AttachmentImages::State;

    QUrl address(const QString& path) const { return service.url().resolved(QUrl(path)); }

    /// The state in the end of what @p answer brings, within bounds of memory.
    State stateInTheEnd(const QString& path, const ScriptedAnswer& answer)
    {
        const QUrl url = address(path);
        service.answer("GET", path.toLatin1(), answer);
        const auto load = [&] {
            images.request(url, 2);
            EXPECT_TRUE(waitUntil([&] { return !images.isLoading(url); }));
        };
        EXPECT_LT(growth(load), 160) << "MiB, for a picture that shows at most 220 x 180";
        // Neither a second try nor what the file refers to is fetched; that would be a request without
        // answer.
        return images.request(url, 2);
    }

    AttachmentImages images;
};

TEST_F(HostilePictures, AreBoundedInPixelsAndMemory)
{
    const QByteArray svg = "<?xml version='1.0'?><!DOCTYPE s [<!ENTITY a 'aaaaaaaaaa'><!ENTITY b "
                           "'&a;&a;&a;&a;&a;&a;&a;&a;'><!ENTITY c SYSTEM 'file:///etc/passwd'>]>"
                           "<svg xmlns='http://www.w3.org/2000/svg' xmlns:x='http://www.w3.org/1999/xlink' "
                           "width='90' height='90'><script>alert(1)</script><image x:href='"
                           + address(u"/outside.png"_s).toEncoded()
                           + "' width='9' height='9'/><text>&b;&b;&c;</text></svg>";
    const struct {
        const char* name;
        QByteArray bytes;
        State end;
    } files[] = {
        {"PNG of 12,000 x 12,000 in a small file", picture({12'000, 12'000}, "PNG", QImage::Format_Mono),
         State::failed},
        {"PNG as large as allowed", picture({5'600, 5'700}, "PNG"), State::loaded},
        {"BMP of 9 squared", bitmap(9), State::loaded},
        {"BMP of 2,147,483,647 squared", bitmap(0x7FFFFFFF), State::failed},
        {"BMP with a negative width", bitmap(-1), State::failed},
        {"a strip one pixel high", picture({30'000, 1}, "PNG"), State::loaded},
        {"SVG", svg, State::failed},
        {"SVG called a PNG", "\x89PNG\r\n\x1A\n" + svg, State::failed},
    };
    int number = 0;
    for (const auto& file : files) {
        SCOPED_TRACE(file.name);
        const QString path = u"/%1.png"_s.arg(++number);
        EXPECT_EQ(stateInTheEnd(path, ScriptedAnswer::json(file.bytes)), file.end);
        const QSize shown = images.displaySize(address(path));
        EXPECT_EQ(shown.boundedTo(AttachmentImages::box), shown);
        EXPECT_EQ(shown.isEmpty(), file.end == State::failed);
        EXPECT_LE(images.image(address(path)).sizeInBytes(), 30'000 * 4 + 2 * 220 * 2 * 180 * 4);
    }
}

TEST_F(HostilePictures, AreNotUnpackedWithoutEnd)
{
    const QByteArray small = picture({9, 9}, "PNG");
    for (const int padding : {0, 400'000'000}) {
        // The length in front is the toolkit's own.
        ScriptedAnswer packed = ScriptedAnswer::json(qCompress(small + QByteArray(padding, '\0')).sliced(4));
        ASSERT_LT(packed.body.size(), 1'000'000);
        packed.headers.push_back({"Content-Encoding", "deflate"});
        EXPECT_EQ(stateInTheEnd(u"/%1.png"_s.arg(padding), packed), padding ? State::failed : State::loaded);
    }
}

TEST_F(HostilePictures, AreFetchedFourAtATimeAndDecodedOneAtATime)
{
    // Each is nothing on the wire and 121 MiB while it is decoded.
    const QByteArray large = picture({5'600, 5'700}, "PNG");
    int most = 0;
    int waiting = 0;
    std::vector<QUrl> urls;
    for (int i = 0; i < 8; ++i) {
        urls.push_back(address(u"/large%1.png"_s.arg(i)));
        service.always("GET", urls.back().path().toLatin1(), [&](const ReceivedRequest&) {
            most = std::max(most, ++waiting);
            return ScriptedAnswer::json(large);
        });
    }
    QObject::connect(&images, &AttachmentImages::changed, &images, [&] { --waiting; });
    const auto isLoading = [&](const QUrl& url) { return images.isLoading(url); };
    const auto load = [&] {
        for (const QUrl& url : urls)
            images.request(url, 1);
        EXPECT_TRUE(waitUntil([&] { return std::ranges::none_of(urls, isLoading); }));
    };
    EXPECT_LT(growth(load), 300);
    EXPECT_LE(most, 4);
    for (const QUrl& url : urls)
        EXPECT_EQ(images.displaySize(url), QSize(176, 180)) << url.path().toStdString();
}

} // namespace
} // namespace orvia::test
