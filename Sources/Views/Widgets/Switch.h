#pragma once

#include <QCheckBox>

class QVariantAnimation;

namespace orvia {

/// An on/off switch, 30 x 18. To assistive tools a check box named by what it switches; the visible label
/// stands beside it.
class Switch : public QCheckBox {
    Q_OBJECT

public:
    explicit Switch(const QString& accessibleName, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    bool hitButton(const QPoint& position) const override { return rect().contains(position); }
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void moveKnob(bool on);

    QVariantAnimation* m_knob;
};

} // namespace orvia
