#pragma once

#include "Models/APIJSON.h"
#include "Models/JSON/Fields.h"

#include <QByteArrayView>

#include <memory>
#include <string>
#include <string_view>

namespace orvia {

/// A record that stays the JSON in which it came until somebody asks for it: for what is a large part of
/// every document and is looked at one at a time. Copies share the text, and so do records of one document.
/// As thread-safe as a text.
template <class T>
class Deferred {
public:
    /// The record without members.
    Deferred() = default;

    /// Keeps @p record as it is written: an instant loses its fraction of a second.
    Deferred(const T& record)
        : Deferred(fromJSON(APIJSON::encoder.encode(record)))
    {
    }

    /// @p json must be strict JSON of an object.
    static Deferred fromJSON(QByteArrayView json)
    {
        return Deferred(std::make_shared<const std::string>(json.data(), json.size()), 0,
                        static_cast<std::size_t>(json.size()));
    }

    /// As @c fromJSON, of the @p size bytes from @p begin on of @p texts, which need not be there before the
    /// record is used.
    Deferred(std::shared_ptr<const std::string> texts, std::size_t begin, std::size_t size)
        : m_texts(std::move(texts))
        , m_begin(begin)
        , m_size(size)
    {
    }

    /// The record, read anew with each call; that takes some microseconds.
    T value() const { return APIJSON::decoder.decode<T>(json()); }

    /// The record's text, as it came or as it was written; valid as long as this.
    QByteArrayView json() const
    {
        return m_texts ? QByteArrayView(m_texts->data() + m_begin, static_cast<qsizetype>(m_size))
                       : QByteArrayView("{}");
    }

    friend bool operator==(const Deferred& left, const Deferred& right)
    {
        return left.json() == right.json() || left.value() == right.value();
    }

private:
    std::shared_ptr<const std::string> m_texts;
    std::size_t m_begin = 0;
    std::size_t m_size = 0;
};

namespace json {

/// Whether every object is a @p T, so that reading it can wait.
template <Record T>
inline constexpr bool isAlwaysReadable =
    std::apply([](const auto&... field) { return ((field.kind == FieldKind::lenient) && ...); }, T::fields());

} // namespace json

} // namespace orvia
