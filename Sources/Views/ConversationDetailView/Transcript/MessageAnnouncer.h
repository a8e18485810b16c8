#pragma once

#include <QTimer>
#include <QWidget>

namespace orvia {

/// Tells assistive tools of something new without moving the focus: a notification without any size on the
/// screen, whose name is the text. It ends after the time that a screen reader needs to fetch it.
class MessageAnnouncer : public QWidget {
    Q_OBJECT

public:
    explicit MessageAnnouncer(QWidget* parent);

    /// Does nothing while no assistive tool listens.
    void announce(const QString& text);

private:
    void end();

    QTimer m_end;
};

} // namespace orvia
