#include "Models/JSON/Encoding.h"
#include "SocketClient/SocketClient.h"

#include <QTextBoundaryFinder>
#include <QWebSocket>

/// The frames that the console sends.
namespace orvia {

using namespace Qt::StringLiterals;

namespace {

struct Typing {
    QString type = u"typing"_s;
    QString conversationId;
    QString preview;

    static constexpr auto fields()
    {
        return std::tuple{json::required("type", &Typing::type),
                          json::required("conversationId", &Typing::conversationId),
                          json::required("preview", &Typing::preview)};
    }
};

struct Read {
    QString type = u"read"_s;
    QString conversationId;

    static constexpr auto fields()
    {
        return std::tuple{json::required("type", &Read::type),
                          json::required("conversationId", &Read::conversationId)};
    }
};

struct Viewing {
    std::optional<QString> conversationId;
};

/// The type is a constant of the frame; the conversation is always written, null when there is none.
void writeValue(json::Writer& writer, const Viewing& frame)
{
    writer.StartObject();
    json::writeText(writer, "type");
    json::writeText(writer, "viewing");
    json::writeText(writer, "conversationId");
    if (frame.conversationId)
        json::writeValue(writer, *frame.conversationId);
    else
        writer.Null();
    writer.EndObject();
}

template <class Frame>
QString textOf(const Frame& frame)
{
    return QString::fromUtf8(APIJSON::encoder.encode(frame));
}

/// The first @p limit user-perceived characters of @p text.
QString firstCharacters(const QString& text, qsizetype limit)
{
    if (text.size() <= limit)
        return text;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    for (qsizetype i = 0; i < limit; ++i) {
        if (finder.toNextBoundary() < 0)
            return text;
    }
    return text.left(finder.position());
}

} // namespace

void SocketClient::sendTyping(const QString& conversationId, const QString& preview)
{
    constexpr qsizetype longestPreview = 500;
    deliver(textOf(
        Typing{.conversationId = conversationId, .preview = firstCharacters(preview, longestPreview)}));
}

void SocketClient::sendRead(const QString& conversationId)
{
    deliver(textOf(Read{.conversationId = conversationId}));
}

void SocketClient::sendViewing(const std::optional<QString>& conversationId)
{
    deliver(textOf(Viewing{conversationId}));
}

void SocketClient::deliver(const QString& text)
{
    const QPointer<SocketClient> self(this);
    if (const auto callback = onSend)
        callback(text);
    if (!self || !m_socket)
        return;
    if (m_socket->state() == QAbstractSocket::ConnectedState)
        m_socket->sendTextMessage(text);
    else
        m_waitingTexts.append(text);
}

} // namespace orvia
