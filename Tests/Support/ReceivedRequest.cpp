#include "Support/ReceivedRequest.h"

#include <QByteArrayList>

namespace orvia::test {

QByteArray ReceivedRequest::path() const
{
    return target.split('?').first();
}

QByteArray ReceivedRequest::query() const
{
    const qsizetype mark = target.indexOf('?');
    return mark < 0 ? QByteArray() : target.mid(mark + 1);
}

std::optional<QByteArray> ReceivedRequest::header(QByteArrayView name) const
{
    for (const auto& [key, value] : headers) {
        if (key.compare(name, Qt::CaseInsensitive) == 0)
            return value;
    }
    return std::nullopt;
}

bool ReceivedRequest::asksForWebSocket() const
{
    return header("Upgrade").value_or(QByteArray()).toLower() == "websocket";
}

std::optional<ReceivedRequest> ReceivedRequest::fromHead(const QByteArray& head)
{
    QByteArrayList lines = head.split('\n');
    const QByteArrayList start = lines.takeFirst().trimmed().split(' ');
    if (start.size() != 3 || start.at(2) != "HTTP/1.1")
        return std::nullopt;
    ReceivedRequest request{start.at(0), start.at(1), {}, {}};
    for (const QByteArray& line : lines) {
        if (line.trimmed().isEmpty())
            continue;
        const qsizetype colon = line.indexOf(':');
        if (colon <= 0)
            return std::nullopt;
        request.headers.emplace_back(line.left(colon), line.mid(colon + 1).trimmed());
    }
    return request;
}

qsizetype ReceivedRequest::announcedLength() const
{
    return header("Content-Length").value_or("0").toLongLong();
}

} // namespace orvia::test
