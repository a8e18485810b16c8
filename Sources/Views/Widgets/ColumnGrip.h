#pragma once

#include <QWidget>

namespace orvia {

/// The invisible strip, 7 pixels wide, by which the line between two columns is dragged.
class ColumnGrip : public QWidget {
    Q_OBJECT

public:
    explicit ColumnGrip(QWidget* parent);

    /// Where the strip lies for a line whose left edge is at @p x.
    QRect areaAround(int x, int height) const;

Q_SIGNALS:
    /// The pointer moved by so many pixels in reading direction since the last signal.
    void dragged(int delta);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    int m_offset = 0; ///< of the pointer inside the strip, when the drag began
};

} // namespace orvia
