#pragma once

#include "Support/Printing.h"

#include <QByteArray>

#include <optional>
#include <utility>
#include <vector>

namespace orvia::test {

using Headers = std::vector<std::pair<QByteArray, QByteArray>>;

/// A request as it stood on the wire.
struct ReceivedRequest {
    QByteArray method;
    QByteArray target; ///< path and query, encoded as sent
    Headers headers;   ///< names and values as sent, in order
    QByteArray body;

    QByteArray path() const;
    /// What follows the first "?" of the target; empty when there is none.
    QByteArray query() const;
    /// The value of the first header of that name in any case.
    std::optional<QByteArray> header(QByteArrayView name) const;
    bool asksForWebSocket() const;

    /// The request whose head (up to the empty line) is @p head, without a body; none when it is malformed.
    static std::optional<ReceivedRequest> fromHead(const QByteArray& head);
    /// Length that the headers announce; 0 without one.
    qsizetype announcedLength() const;
};

} // namespace orvia::test
