#pragma once

#include <QWidget>

namespace orvia {

class Label;
class Session;

/// Whether the live channel stands, at the foot of the sidebar.
class StatusStrip : public QWidget {
    Q_OBJECT

public:
    explicit StatusStrip(Session& session, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void follow();

    Session& m_session;
    Label* m_text;
};

} // namespace orvia
