#pragma once

#include <QWidget>

class QVBoxLayout;

namespace orvia {

/// The frame of every section: its title above its contents, both at the leading edge.
class PanelSection : public QWidget {
    Q_OBJECT

public:
    explicit PanelSection(const QString& title, QWidget* parent = nullptr);

    QVBoxLayout* contents() const { return m_contents; }

private:
    QVBoxLayout* m_contents;
};

} // namespace orvia
