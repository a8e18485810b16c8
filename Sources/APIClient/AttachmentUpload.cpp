#include "APIClient/Perform.h"

#include <QUuid>

namespace orvia {

using namespace Qt::StringLiterals;

QByteArray multipartBody(const QByteArray& boundary, const QString& fileName, const QString& mimeType,
                         const QByteArray& data, bool note)
{
    QString safeName = fileName;
    safeName.replace(u'"', u'_');

    QByteArray body;
    body.reserve(data.size() + 512);
    if (note) {
        body += "--" + boundary + "\r\n";
        body += "Content-Disposition: form-data; name=\"note\"\r\n\r\n";
        body += "true\r\n";
    }
    body += "--" + boundary + "\r\n";
    body += "Content-Disposition: form-data; name=\"file\"; filename=\"" + safeName.toUtf8() + "\"\r\n";
    body += "Content-Type: " + mimeType.toUtf8() + "\r\n\r\n";
    body += data;
    body += "\r\n--" + boundary + "--\r\n";
    return body;
}

QCoro::Task<Message> APIClient::uploadAttachment(QString conversationId, QString fileName, QString mimeType,
                                                 QByteArray data, bool note) const
{
    const QByteArray boundary = "orvia-" + QUuid::createUuid().toByteArray(QUuid::WithoutBraces).toUpper();
    const QString path = "/v1/agent/conversations/"_L1 + conversationId + "/attachments"_L1;
    QByteArray body = multipartBody(boundary, fileName, mimeType, data, note);
    auto response = co_await perform<MessageResponse>("POST", path, Query(), std::move(body),
                                                      "multipart/form-data; boundary=" + boundary);
    co_return std::move(response.message);
}

} // namespace orvia
