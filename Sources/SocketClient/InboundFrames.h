#pragma once

#include "Models/SocketEvent.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>

namespace orvia {

/// Reads the frames of the live channel: an event each, or none for a frame that does not decode.
class InboundFrames {
public:
    std::optional<SocketEvent> binaryFrame(QByteArrayView bytes) const;
    std::optional<SocketEvent> textFrame(const QString& text);

private:
    QByteArray m_buffer; ///< the bytes of the last text frame, kept for their capacity
};

} // namespace orvia
