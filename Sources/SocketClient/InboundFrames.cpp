#include "SocketClient/InboundFrames.h"

#include "Models/APIJSON.h"

#include <QStringEncoder>

namespace orvia {

namespace {

/// Buffers beyond this are not worth keeping between frames.
constexpr qsizetype largestKeptBuffer = 64 * 1024;

} // namespace

std::optional<SocketEvent> InboundFrames::binaryFrame(QByteArrayView bytes) const
{
    try {
        return APIJSON::decoder.decode<SocketEvent>(bytes);
    } catch (const DecodingError&) {
        return std::nullopt;
    }
}

std::optional<SocketEvent> InboundFrames::textFrame(const QString& text)
{
    QStringEncoder encoder(QStringEncoder::Utf8);
    m_buffer.resize(encoder.requiredSpace(text.size()));
    const char* end = encoder.appendToBuffer(m_buffer.data(), text);
    std::optional<SocketEvent> event = binaryFrame(QByteArrayView(m_buffer.constData(), end));
    if (m_buffer.capacity() > largestKeptBuffer)
        m_buffer = QByteArray();
    return event;
}

} // namespace orvia
