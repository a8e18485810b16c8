#include "ClientFixture.h"

#include <QRegularExpression>

namespace orvia::test {
namespace {

using AttachmentUpload = ClientFixture;

TEST_F(AttachmentUpload, PostsTheFileUnderABoundaryOfItsOwn)
{
    // Every byte value, and what looks like the end of a part.
    QByteArray data("\r\n--");
    for (int value = 0; value < 256; ++value)
        data += static_cast<char>(value);
    data = data.repeated(2000);
    service.always("POST", "/v1/agent/conversations/c1/attachments",
                   ScriptedAnswer::json(wrapped("message", messageJSON)));
    const QRegularExpression form(
        u"^multipart/form-data; boundary=(orvia-[0-9A-F]{8}(?:-[0-9A-F]{4}){3}-[0-9A-F]{12})$"_s);
    QByteArrayList boundaries;
    for (const bool note : {false, true}) {
        const auto outcome = runTask(
            client().uploadAttachment(u"c1"_s, u"a \"good\" größe.txt"_s, u"text/plain"_s, data, note));
        ASSERT_TRUE(outcome.value) << outcome.errorMessage().toStdString();
        EXPECT_EQ(outcome.value->id, u"m1"_s);

        const ReceivedRequest& request = service.requests().back();
        const auto match =
            form.match(QString::fromLatin1(request.header("Content-Type").value_or(QByteArray())));
        ASSERT_TRUE(match.hasMatch()) << request.header("Content-Type")->constData();
        const QByteArray delimiter = "--" + match.captured(1).toLatin1();
        const QByteArray mark =
            delimiter + "\r\nContent-Disposition: form-data; name=\"note\"\r\n\r\ntrue\r\n";
        EXPECT_TRUE(request.body
                    == (note ? mark : QByteArray()) + delimiter
                           + "\r\nContent-Disposition: form-data; name=\"file\"; "
                             "filename=\"a _good_ größe.txt\"\r\nContent-Type: text/plain\r\n\r\n"
                           + data + "\r\n" + delimiter + "--\r\n");
        EXPECT_EQ(request.header("Authorization"), "Bearer t0k3n");
        EXPECT_EQ(request.header("Accept"), "application/json");
        boundaries.append(delimiter);
    }
    EXPECT_NE(boundaries.at(0), boundaries.at(1));
}

} // namespace
} // namespace orvia::test
