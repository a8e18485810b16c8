#pragma once

#include <QFont>
#include <QObject>
#include <QTimer>

namespace orvia {

/// Finds the typefaces of scripts that the interface's own lacks, while nothing else is to be done. Asking
/// the system for one takes milliseconds for every font and script, which would be felt when a list of texts
/// in several scripts is painted for the first time.
class TypefaceSearch : public QObject {
    Q_OBJECT

public:
    /// Searches for @p font, a script at a time, and then rests.
    explicit TypefaceSearch(const QFont& font, QObject* parent = nullptr);

    bool isFinished() const { return !m_timer.isActive(); }

private:
    void searchNext();

    QFont m_font;
    std::size_t m_step = 0;
    QTimer m_timer;
};

} // namespace orvia
