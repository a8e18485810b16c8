#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <exception>

namespace orvia {

/// Why a JSON document is not the record that was asked for.
class DecodingError : public std::exception {
public:
    enum class Kind { syntax, typeMismatch, missingMember, corruptedData };

    DecodingError(Kind kind, QString description)
        : m_kind(kind)
        , m_description(std::move(description))
        , m_utf8(m_description.toUtf8())
    {
    }

    Kind kind() const { return m_kind; }
    const QString& description() const { return m_description; }
    const char* what() const noexcept override { return m_utf8.constData(); }

private:
    Kind m_kind;
    QString m_description;
    QByteArray m_utf8;
};

/// A record that decodes from any JSON document and keeps nothing: the answer of an operation that nobody
/// reads.
struct JSONValueIgnored {
    friend bool operator==(const JSONValueIgnored&, const JSONValueIgnored&) = default;
};

/// The one JSON coder of the console: every response body, request body, socket frame and cached record.
/// Reading is strict JSON (RFC 8259) in UTF-8, a byte order mark is ignored, with at most @c maxDocumentBytes
/// and fewer than @c maxDepth levels; members that a record does not name are ignored. Instants are written
/// with whole seconds. Both are thread-safe.
namespace APIJSON {

inline constexpr qsizetype maxDocumentBytes = 128 * 1024 * 1024;
inline constexpr std::size_t maxDepth = 512;

struct Decoder {
    /// The record in @p bytes. Throws DecodingError. Defined for the records of Models; a private record of
    /// another unit includes Models/JSON/Decoding.h.
    template <class T>
    T decode(QByteArrayView bytes) const;
};

struct Encoder {
    /// The record as compact JSON, members in their declared order, absent optional members left out.
    template <class T>
    QByteArray encode(const T& record) const;
};

inline constexpr Decoder decoder;
inline constexpr Encoder encoder;

} // namespace APIJSON

} // namespace orvia
