#include "Session/SessionFixture.h"
#include "Views/ConversationDetailView/Transcript/AttachmentImages.h"

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QtEndian>

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

/// @p bytes with a width and a height of @p edge where the format has them. The checksum of a PNG's head is
/// left wrong on purpose: nothing may be allocated before it is looked at.
template <class Number>
QByteArray enlarged(QByteArray bytes, qsizetype width, qsizetype height, Number edge)
{
    memcpy(bytes.data() + width, &edge, sizeof edge);
    memcpy(bytes.data() + height, &edge, sizeof edge);
    return bytes;
}

/// A PNG's head with a valid checksum and no pixels.
QByteArray pngHead(quint32 edge)
{
    const auto number = [](quint32 value) {
        QByteArray bytes(4, '\0');
        qToBigEndian(value, bytes.data());
        return bytes;
    };
    const auto checksum = [](const QByteArray& bytes) {
        quint32 sum = 0xFFFFFFFFU;
        for (const char byte : bytes) {
            sum ^= static_cast<quint8>(byte);
            for (int bit = 0; bit < 8; ++bit)
                sum = (sum >> 1) ^ (sum & 1U ? 0xEDB88320U : 0U);
        }
        return ~sum;
    };
    const QByteArray head = "IHDR" + number(edge) + number(edge) + QByteArray("\x08\x06\0\0\0", 5);
    return "\x89PNG\r\n\x1A\n" + number(13) + head + number(checksum(head));
}

/// A picture that moves for @p frames frames, or for ever as the loop extension has it.
QByteArray movingPicture(int frames)
{
    QByteArray bytes = QByteArray::fromHex("474946383961"
                                           "08000800"
                                           "800000"
                                           "102030ffffff"
                                           "21ff0b4e45545343415045322e300301000000");
    for (int frame = 0; frame < frames; ++frame)
        bytes += QByteArray::fromHex("21f9040000000000"
                                     "2c00000000080008000002078c8fa9cbed0f0500");
    return bytes + ';';
}

/// @p bytes as a content-encoding of gzip.
QByteArray packed(const QByteArray& bytes)
{
    QProcess gzip;
    gzip.start(u"gzip"_s, {u"-9"_s, u"-c"_s});
    gzip.write(bytes);
    gzip.closeWriteChannel();
    gzip.waitForFinished();
    return gzip.readAllStandardOutput();
}

/// What the process has in memory at most since the last call of @c forgetPeak, in MiB.
int peakMemory()
{
    QFile status(u"/proc/self/status"_s);
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').first().toInt() / 1024;
    }
    return -1;
}

void forgetPeak()
{
    QFile references(u"/proc/self/clear_refs"_s);
    if (references.open(QIODevice::WriteOnly))
        references.write("5");
}

class HostilePictures : public SessionFixture {
protected:
    using State = AttachmentImages::State;

    QUrl address(const QString& path) const { return service.url().resolved(QUrl(path)); }

    State stateInTheEnd(const QUrl& url)
    {
        images.request(url, 2);
        EXPECT_TRUE(waitUntil([&] { return !images.isLoading(url); }));
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
        {"PNG of 50,000 x 50,000 by its head", pngHead(50'000), State::failed},
        {"PNG of 2,147,483,647 squared", pngHead(0x7FFFFFFF), State::failed},
        {"PNG with a head that does not match",
         enlarged(picture({9, 9}, "PNG"), 16, 20, qToBigEndian(50'000U)), State::failed},
        {"PNG of 12,000 x 12,000 in a small file", picture({12'000, 12'000}, "PNG", QImage::Format_Mono),
         State::failed},
        {"PNG as large as allowed", picture({5'600, 5'700}, "PNG"), State::loaded},
        {"GIF of 65,535 squared", enlarged(movingPicture(1), 6, 8, quint16(65'535)), State::failed},
        {"BMP of 50,000 squared", enlarged(picture({9, 9}, "BMP"), 18, 22, 50'000), State::failed},
        {"BMP with a negative width", enlarged(picture({9, 9}, "BMP"), 18, 22, -1), State::failed},
        {"a strip one pixel high", picture({30'000, 1}, "PNG"), State::loaded},
        {"a GIF that moves 20,000 times", movingPicture(20'000), State::loaded},
        {"a GIF cut off in its first frame", movingPicture(1).left(50), State::failed},
        {"SVG", svg, State::failed},
        {"SVG called a PNG", "\x89PNG\r\n\x1A\n" + svg, State::failed},
        {"half a JPEG", picture({500, 500}, "JPG").left(400), State::failed},
        {"noise", QByteArray("GIF89a").repeated(9'000), State::failed},
    };
    int number = 0;
    for (const auto& file : files) {
        SCOPED_TRACE(file.name);
        const QString path = u"/%1.png"_s.arg(++number);
        service.answer("GET", path.toLatin1(), ScriptedAnswer::json(file.bytes));
        forgetPeak();
        const int before = peakMemory();
        const State end = stateInTheEnd(address(path));
        EXPECT_EQ(end, file.end);
        EXPECT_LT(peakMemory() - before, 160) << "MiB, for a picture that shows at most 220 x 180";
        const QSize shown = images.displaySize(address(path));
        EXPECT_EQ(shown.boundedTo(AttachmentImages::box), shown);
        if (end == State::loaded) {
            EXPECT_FALSE(shown.isEmpty());
            EXPECT_LE(images.image(address(path)).sizeInBytes(), 30'000 * 4 + 2 * 220 * 2 * 180 * 4);
        }
        // Neither a second try nor what the file refers to is fetched; that would be a request without
        // answer.
        EXPECT_EQ(service.requests("GET", path.toLatin1()).size(), 1U);
    }
}

TEST_F(HostilePictures, AreNotUnpackedWithoutEnd)
{
    ScriptedAnswer bomb =
        ScriptedAnswer::json(packed(picture({9, 9}, "PNG") + QByteArray(400'000'000, '\0')));
    ASSERT_LT(bomb.body.size(), 1'000'000);
    bomb.headers.push_back({"Content-Encoding", "gzip"});
    service.answer("GET", "/bomb.png", bomb);
    forgetPeak();
    const int before = peakMemory();
    EXPECT_EQ(stateInTheEnd(address(u"/bomb.png"_s)), State::failed);
    EXPECT_LT(peakMemory() - before, 160);
}

TEST_F(HostilePictures, AreFetchedFourAtATimeAndDecodedOneAtATime)
{
    // Each is nothing on the wire and 121 MiB while it is decoded.
    const QByteArray large = picture({5'600, 5'700}, "PNG");
    constexpr int count = 8;
    int most = 0;
    int waiting = 0;
    for (int i = 0; i < count; ++i)
        service.always("GET", "/large%1.png"_ba.replace("%1", QByteArray::number(i)),
                       [&](const ReceivedRequest&) {
                           most = std::max(most, ++waiting);
                           return ScriptedAnswer::json(large);
                       });
    QObject::connect(&images, &AttachmentImages::changed, &images, [&] { --waiting; });
    forgetPeak();
    const int before = peakMemory();
    waiting = 0;
    for (int i = 0; i < count; ++i)
        images.request(address(u"/large%1.png"_s.arg(i)), 1);
    EXPECT_TRUE(waitUntil([&] { return waiting == 0 && !images.isLoading(address(u"/large0.png"_s)); }));
    EXPECT_LE(most, 4);
    EXPECT_LT(peakMemory() - before, 300);
    for (int i = 0; i < count; ++i)
        EXPECT_EQ(images.displaySize(address(u"/large%1.png"_s.arg(i))), QSize(176, 180)) << i;
}

} // namespace
} // namespace orvia::test
