#include "DemoService/MultipartParser.h"
#include "DemoService/Exchange.h"
#include "Support/Printing.h"

#include <gmock/gmock.h>

namespace orvia::test {

using demo::FormPart;
using demo::parseMultipart;
using demo::Refusal;
using namespace Qt::StringLiterals;

namespace {

const QByteArray type = "multipart/form-data; boundary=B";

int refusalStatus(const QByteArray& contentType, const QByteArray& body)
{
    try {
        parseMultipart(contentType, body);
        return 0;
    } catch (const Refusal& refusal) {
        EXPECT_FALSE(refusal.message.isEmpty());
        return refusal.status;
    }
}

const QByteArray header = "Content-Disposition: form-data; name=\"file\"; filename=\"a.txt\"\r\n";

} // namespace

TEST(MultipartParserTest, ReadsPartsAsTheyWereWritten)
{
    const QByteArray data("\r\n--\r\n--C\0--", 12);
    const auto parts = parseMultipart(
        type, "preamble\r\n--B\r\nContent-Disposition: form-data; name=note\r\n\r\ntrue"
              "\r\n--B\r\ncontent-type: text/x; a=b\r\n"
              "CONTENT-DISPOSITION: form-data; filename=\"ü;\xC3\xA9=1.txt\"; name=\"file\"\r\n\r\n"
                  + data + "\r\n--B--\r\nepilogue");
    ASSERT_EQ(parts.size(), 2U);
    EXPECT_EQ(parts[0].name, u"note"_s);
    EXPECT_FALSE(parts[0].fileName);
    EXPECT_EQ(parts[0].data, "true");
    EXPECT_EQ(parts[1].name, u"file"_s);
    EXPECT_EQ(parts[1].fileName, u"ü;é=1.txt"_s);
    EXPECT_EQ(parts[1].mime, u"text/x; a=b"_s);
    EXPECT_EQ(parts[1].data, data);
}

TEST(MultipartParserTest, RefusesWhatIsNoForm)
{
    EXPECT_EQ(refusalStatus("application/json", "{}"), 415);
    EXPECT_EQ(refusalStatus({}, {}), 415);
    EXPECT_EQ(refusalStatus("multipart/form-data", "--B--"), 400);
    EXPECT_EQ(refusalStatus("multipart/form-data; boundary=" + QByteArray(71, 'b'), "--B--"), 400);
    EXPECT_EQ(refusalStatus("multipart/form-data; boundary=\"B", "--B--"), 400);
    const QByteArray whole = "--B\r\n" + header + "\r\ntext\r\n--B--";
    EXPECT_EQ(refusalStatus(type, whole), 0);
    // The final delimiter is complete with its second hyphen; everything shorter is cut off.
    for (qsizetype length = 0; length < whole.size(); ++length)
        EXPECT_EQ(refusalStatus(type, whole.left(length)), 400) << length;
    EXPECT_EQ(refusalStatus(type, "--B\r\nContent-Disposition: attachment; name=\"a\"\r\n\r\nx\r\n--B--"),
              400);
    EXPECT_EQ(refusalStatus(type, "--B\r\nContent-Type: text/plain\r\n\r\nx\r\n--B--"), 400);

    QByteArray many;
    for (std::size_t part = 0; part <= demo::maxFormParts; ++part)
        many += "--B\r\n" + header + "\r\nx\r\n";
    EXPECT_EQ(refusalStatus(type, many + "--B--"), 400);
}

} // namespace orvia::test
