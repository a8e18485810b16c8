#include "ClientFixture.h"

#include <QRegularExpression>

namespace orvia::test {
namespace {

using AttachmentUpload = ClientFixture;

/// Every byte value, and what looks like the end of a part.
QByteArray awkwardBytes()
{
    QByteArray bytes("\r\n--");
    for (int value = 0; value < 256; ++value)
        bytes += static_cast<char>(value);
    return bytes;
}

TEST(MultipartBody, OfAReplyIsTheFileAlone)
{
    EXPECT_EQ(multipartBody("B", u"a \"good\" größe.txt"_s, u"text/plain"_s, awkwardBytes(), false),
              "--B\r\n"
              "Content-Disposition: form-data; name=\"file\"; filename=\"a _good_ größe.txt\"\r\n"
              "Content-Type: text/plain\r\n\r\n"
                  + awkwardBytes() + "\r\n--B--\r\n");
}

TEST(MultipartBody, OfANoteBeginsWithTheMark)
{
    EXPECT_EQ(multipartBody("B", u"empty"_s, u"application/octet-stream"_s, {}, true),
              "--B\r\nContent-Disposition: form-data; name=\"note\"\r\n\r\ntrue\r\n"
              "--B\r\nContent-Disposition: form-data; name=\"file\"; filename=\"empty\"\r\n"
              "Content-Type: application/octet-stream\r\n\r\n\r\n--B--\r\n");
}

TEST_F(AttachmentUpload, PostsTheBodyUnderABoundaryOfItsOwn)
{
    const QRegularExpression form(
        u"^multipart/form-data; boundary=(orvia-[0-9A-F]{8}(?:-[0-9A-F]{4}){3}-[0-9A-F]{12})$"_s);
    const QByteArray data = awkwardBytes().repeated(2000);
    service.always("POST", "/v1/agent/conversations/c1/attachments",
                   ScriptedAnswer::json(wrapped("message", messageJSON)));
    QStringList boundaries;
    for (const bool note : {false, true}) {
        const auto outcome =
            runTask(client().uploadAttachment(u"c1"_s, u"photo.png"_s, u"image/png"_s, data, note));
        ASSERT_TRUE(outcome.value) << outcome.errorMessage().toStdString();
        EXPECT_EQ(outcome.value->id, u"m1"_s);

        const ReceivedRequest& request = service.requests().back();
        const auto match =
            form.match(QString::fromLatin1(request.header("Content-Type").value_or(QByteArray())));
        ASSERT_TRUE(match.hasMatch()) << request.header("Content-Type")->constData();
        boundaries.append(match.captured(1));
        EXPECT_TRUE(
            request.body
            == multipartBody(boundaries.last().toLatin1(), u"photo.png"_s, u"image/png"_s, data, note));
        EXPECT_EQ(request.header("Authorization"), "Bearer t0k3n");
        EXPECT_EQ(request.header("Accept"), "application/json");
    }
    EXPECT_NE(boundaries.at(0), boundaries.at(1));
}

} // namespace
} // namespace orvia::test
