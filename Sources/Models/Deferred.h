#pragma once

#include "Models/APIJSON.h"
#include "Models/JSON/Fields.h"

#include <QByteArrayView>

#include <memory>
#include <string>
#include <string_view>

namespace orvia {

/// A record that stays the JSON in which it came until somebody asks for it: for what is a large part of
/// every document and is looked at one at a time. A long one is read where it is received, so that looking at
/// it holds up nobody. Copies share the text, and so do records of one document. As thread-safe as a text.
template <class T>
class Deferred {
public:
    /// What is read in some ten microseconds, in bytes.
    static constexpr std::size_t longestUnread = 8 * 1024;

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
        return Deferred(std::make_shared<const std::string>(json.data(), json.size()), 0, json);
    }

    /// As @c fromJSON, with a text of which @p texts has a copy from @p begin on, at the latest when the
    /// record is used.
    Deferred(std::shared_ptr<const std::string> texts, std::size_t begin, QByteArrayView json)
        : m_texts(std::move(texts))
        , m_begin(begin)
        , m_size(static_cast<std::size_t>(json.size()))
    {
        if (m_size > longestUnread)
            m_record = std::make_shared<const T>(APIJSON::decoder.decode<T>(json));
    }

    /// The record; a short one is read anew with each call.
    std::shared_ptr<const T> value() const
    {
        return m_record ? m_record : std::make_shared<const T>(APIJSON::decoder.decode<T>(json()));
    }

    /// The record's text, as it came or as it was written; valid as long as this.
    QByteArrayView json() const
    {
        return m_texts ? QByteArrayView(m_texts->data() + m_begin, static_cast<qsizetype>(m_size))
                       : QByteArrayView("{}");
    }

    friend bool operator==(const Deferred& left, const Deferred& right)
    {
        return left.json() == right.json() || *left.value() == *right.value();
    }

private:
    std::shared_ptr<const std::string> m_texts;
    std::size_t m_begin = 0;
    std::size_t m_size = 0;
    std::shared_ptr<const T> m_record; ///< of a long text
};

namespace json {

/// Whether every object is a @p T, so that reading it can wait.
template <Record T>
inline constexpr bool isAlwaysReadable =
    std::apply([](const auto&... field) { return ((field.kind == FieldKind::lenient) && ...); }, T::fields());

} // namespace json

} // namespace orvia
