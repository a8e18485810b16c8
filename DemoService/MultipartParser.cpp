#include "DemoService/MultipartParser.h"

#include "DemoService/Exchange.h"

#include <QHash>

namespace orvia::demo {

using namespace Qt::StringLiterals;

namespace {

[[noreturn]] void refuse(const QString& reason)
{
    throw Refusal(400, u"Malformed multipart body: %1."_s.arg(reason));
}

/// The value of a header with its parameters, for example form-data; name="file".
struct ParameterizedValue {
    QByteArray value; ///< lower case
    QHash<QByteArray, QByteArray> parameters;
};

/// A quoted text may hold semicolons, so that splitting at them would not do.
ParameterizedValue parseParameters(const QByteArray& text)
{
    ParameterizedValue parsed;
    qsizetype end = text.indexOf(';');
    parsed.value = text.mid(0, end).trimmed().toLower();
    while (end >= 0 && end < text.size()) {
        const qsizetype start = end + 1;
        const qsizetype equals = text.indexOf('=', start);
        if (equals < 0)
            break;
        const QByteArray name = text.mid(start, equals - start).trimmed().toLower();
        qsizetype valueStart = equals + 1;
        while (valueStart < text.size() && text[valueStart] == ' ')
            ++valueStart;
        if (valueStart < text.size() && text[valueStart] == '"') {
            const qsizetype quote = text.indexOf('"', valueStart + 1);
            if (quote < 0)
                refuse(u"a quoted text does not end"_s);
            parsed.parameters.insert(name, text.mid(valueStart + 1, quote - valueStart - 1));
            end = text.indexOf(';', quote);
        } else {
            end = text.indexOf(';', valueStart);
            parsed.parameters.insert(name, text.mid(valueStart, end < 0 ? -1 : end - valueStart).trimmed());
        }
    }
    return parsed;
}

FormPart parsePart(const QByteArray& headers)
{
    FormPart part;
    for (const QByteArray& line : headers.split('\n')) {
        const qsizetype colon = line.indexOf(':');
        if (colon < 0)
            continue;
        const QByteArray name = line.left(colon).trimmed().toLower();
        const QByteArray value = line.mid(colon + 1).trimmed();
        if (name == "content-type")
            part.mime = QString::fromUtf8(value);
        if (name != "content-disposition")
            continue;
        const ParameterizedValue disposition = parseParameters(value);
        if (disposition.value != "form-data")
            refuse(u"a part is not form data"_s);
        part.name = QString::fromUtf8(disposition.parameters.value("name"));
        if (disposition.parameters.contains("filename"))
            part.fileName = QString::fromUtf8(disposition.parameters.value("filename"));
    }
    if (part.name.isEmpty())
        refuse(u"a part has no name"_s);
    return part;
}

} // namespace

std::vector<FormPart> parseMultipart(const QByteArray& contentType, const QByteArray& body)
{
    const ParameterizedValue type = parseParameters(contentType);
    if (type.value != "multipart/form-data")
        throw Refusal(415, u"The body must be sent as multipart/form-data."_s);
    const QByteArray boundary = type.parameters.value("boundary");
    if (boundary.isEmpty() || boundary.size() > 70)
        refuse(u"it needs a boundary of 1 to 70 characters"_s);

    const QByteArray opening = "--" + boundary;
    const QByteArray delimiter = "\r\n" + opening;
    std::vector<FormPart> parts;
    // The first delimiter may open the body or follow a preamble, which counts for nothing.
    qsizetype position = body.startsWith(opening) ? opening.size() : body.indexOf(delimiter);
    if (position < 0)
        refuse(u"its boundary does not occur"_s);
    if (!body.startsWith(opening))
        position += delimiter.size();

    while (body.mid(position, 2) != "--") {
        const qsizetype headerStart = body.indexOf("\r\n", position);
        const qsizetype headerEnd = headerStart < 0 ? -1 : body.indexOf("\r\n\r\n", headerStart);
        const qsizetype dataEnd = headerEnd < 0 ? -1 : body.indexOf(delimiter, headerEnd + 2);
        if (dataEnd < 0)
            refuse(u"a part does not end"_s);
        if (parts.size() == maxFormParts)
            refuse(u"it has too many parts"_s);
        FormPart part = parsePart(body.mid(headerStart + 2, headerEnd - headerStart - 2));
        // An empty part's delimiter may begin with the line break that ends the headers.
        const qsizetype dataStart = std::min(headerEnd + 4, dataEnd);
        part.data = body.mid(dataStart, dataEnd - dataStart);
        parts.push_back(std::move(part));
        position = dataEnd + delimiter.size();
    }
    return parts;
}

} // namespace orvia::demo
