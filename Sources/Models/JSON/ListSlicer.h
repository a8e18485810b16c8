#pragma once

#include <QByteArrayView>

#include <mutex>
#include <optional>
#include <string_view>

namespace orvia::json {

/// Cuts a page, which is an object whose one member is a list, into runs of neighbouring elements without
/// reading them. What is cut is a page exactly when every run, put in brackets, is a list of at least one
/// value and @c reachedEnd is true after the last run. Thread-safe, so that several threads can share the
/// runs.
class ListSlicer {
public:
    struct Slice {
        std::size_t index; ///< counts the runs from 0
        std::string_view elements;
    };

    /// @p document must outlive this.
    ListSlicer(QByteArrayView document, std::string_view key);

    /// The next run, about @p size bytes long or one element if that is longer; none behind the last.
    std::optional<Slice> next(std::size_t size);

    /// Whether the runs given out are all of the list, and the document ends behind it.
    bool reachedEnd() const;

private:
    bool skip(char expected);
    std::optional<std::string_view> cut(std::size_t size);
    std::optional<std::string_view> cutAtMark(std::size_t size);

    mutable std::mutex m_mutex;
    std::string_view m_rest;
    std::string_view m_mark; ///< how an element after the first one most likely begins; empty if unknown
    std::size_t m_count = 0;
    bool m_isInside = false;
    bool m_reachedEnd = false;
};

} // namespace orvia::json
