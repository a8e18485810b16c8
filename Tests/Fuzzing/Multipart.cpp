#include "Input.h"

#include "APIClient/APIClient.h"
#include "DemoService/Exchange.h"
#include "DemoService/MultipartParser.h"

/// The body of an upload, and its reader. Fields: the boundary, which makes the second half of the input a
/// body where it is empty; "n" for a note; file name; media type; the file's bytes.
namespace orvia::fuzzing {
namespace {

using demo::FormPart;

void checkReader(const QByteArray& contentType, const QByteArray& body)
{
    try {
        const std::vector<FormPart> parts = demo::parseMultipart(contentType, body);
        require(parts.size() <= demo::maxFormParts, "parts are bounded");
        for (const FormPart& part : parts)
            require(!part.name.isEmpty() && body.contains(part.data), "a part is named and from the body");
    } catch (const demo::Refusal& refusal) {
        require(refusal.status == 400 || refusal.status == 415, "a refusal is the client's fault");
    }
}

/// What goes in comes out: one file and the mark of a note, whatever the file is called and holds.
void checkBuilder(const QByteArray& boundary, const QString& fileName, const QString& mimeType,
                  const QByteArray& data, bool note)
{
    const QByteArray body = multipartBody(boundary, fileName, mimeType, data, note);
    const QByteArray delimiter = "--" + boundary;
    require(body.startsWith(delimiter + "\r\n") && body.endsWith("\r\n" + delimiter + "--\r\n"),
            "a body stands between delimiters");
    require(body.count(delimiter) == (note ? 3 : 2), "only delimiters begin a part");

    const std::vector<FormPart> parts =
        demo::parseMultipart("multipart/form-data; boundary=" + boundary, body);
    require(parts.size() == (note ? 2U : 1U), "a body holds its file and the mark of a note");
    if (note)
        require(parts[0].name == u"note" && parts[0].data == "true" && !parts[0].fileName,
                "a note is marked");
    const FormPart& file = parts.back();
    QString safeName = fileName;
    safeName.replace(u'"', u'_');
    require(file.name == u"file" && file.fileName == safeName, "a file keeps its name");
    require(file.mime.toUtf8() == mimeType.toUtf8().trimmed(), "a file keeps its type");
    require(file.data == data, "a file's bytes are unchanged");
}

} // namespace
} // namespace orvia::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace orvia::fuzzing;
    Input input(data, size);
    const QByteArray boundary = input.bytes();
    const bool note = input.bytes() == "n";
    const QString fileName = input.text();
    const QString mimeType = input.text();
    const QByteArray bytes = input.bytes();
    const QByteArray whole(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    checkReader("multipart/form-data; boundary=" + boundary,
                whole.sliced(qMin(boundary.size() + 1, whole.size())));
    checkReader(fileName.toUtf8(), bytes);
    // The console makes its boundary anew for every upload, so that nothing of the upload holds it, and takes
    // the media type from a table.
    const QByteArray own = "orvia-" + boundary.left(18).toHex().toUpper();
    const QString names = mimeType + fileName;
    if (whole.contains(own) || names.contains(u'\r') || names.contains(u'\n'))
        return 0;
    checkBuilder(own, fileName, mimeType, bytes, note);
    return 0;
}
