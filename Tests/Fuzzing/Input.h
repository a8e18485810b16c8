#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <stdexcept>

/// What the fuzz targets share. A target reads its input as fields that a record separator (0x1E) ends, so
/// that a text holds whatever else a text may hold, and an input can be read and written by a person.
namespace orvia::fuzzing {

/// Code under test did not keep a promise. Nobody catches it while fuzzing, which ends the run with the input
/// saved; the replay of the corpus reports it with the input's name.
class BrokenPromise : public std::logic_error {
public:
    using std::logic_error::logic_error;
};

/// Ends the run unless @p kept. @p promise says what holds.
inline void require(bool kept, const char* promise)
{
    if (!kept)
        throw BrokenPromise(promise);
}

/// The fields of one input, in their order.
class Input {
public:
    Input(const uint8_t* data, size_t size)
        : m_rest(QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)))
    {
    }

    bool atEnd() const { return m_rest.isEmpty(); }

    /// The next field, empty behind the last one. A copy in memory of its own, so that the address sanitizer
    /// sees who reads past its terminating zero.
    QByteArray bytes()
    {
        const qsizetype end = m_rest.indexOf('\x1E');
        const QByteArray field(m_rest.constData(), end < 0 ? m_rest.size() : end);
        m_rest = end < 0 ? QByteArray() : m_rest.sliced(end + 1);
        return field;
    }

    QString text() { return QString::fromUtf8(bytes()); }

    /// The next field, absent where it is missing or a lone "-".
    std::optional<QString> optionalText()
    {
        if (atEnd())
            return std::nullopt;
        const QString field = text();
        return field == QChar(u'-') ? std::nullopt : std::optional(field);
    }

private:
    QByteArray m_rest;
};

} // namespace orvia::fuzzing

/// What the fuzzing engine calls with each input; answers 0.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
