#pragma once

#include <QString>

#include <optional>

namespace orvia {

/// The key of a member whose name is not known in advance. It is a text; it never stands for a position.
struct JSONDynamicKey {
    QString stringValue;

    explicit JSONDynamicKey(QString string)
        : stringValue(std::move(string))
    {
    }

    /// Always none: a member of an object has no integer form.
    static std::optional<JSONDynamicKey> fromInteger(qint64) { return std::nullopt; }
};

} // namespace orvia
