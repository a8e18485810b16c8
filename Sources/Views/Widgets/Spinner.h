#pragma once

#include "Theme/Theme.h"

#include <QBasicTimer>
#include <QWidget>

namespace orvia {

/// A turning arc. Turns while it is visible, costs nothing while hidden.
class Spinner : public QWidget {
    Q_OBJECT

public:
    /// @p size is the outer diameter in pixels.
    explicit Spinner(int size = 16, ColorRole color = ColorRole::textSecondary, QWidget* parent = nullptr);

    void setColor(ColorRole color);
    QSize sizeHint() const override { return {m_size, m_size}; }

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    int m_size;
    ColorRole m_color;
    QBasicTimer m_timer;
};

} // namespace orvia
