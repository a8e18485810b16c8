#pragma once

#include <QCheckBox>
#include <QPointer>

class QVariantAnimation;

namespace orvia {

/// An on/off switch, 30 x 18. To assistive tools a check box named by what it switches; the visible label
/// stands beside it.
class Switch : public QCheckBox {
    Q_OBJECT

public:
    explicit Switch(const QString& accessibleName, QWidget* parent = nullptr);

    /// Makes a click on @p label, the text beside the switch, act like one on the switch.
    void setLabel(QWidget* label);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    bool hitButton(const QPoint& position) const override { return rect().contains(position); }
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void moveKnob(bool on);

    QVariantAnimation* m_knob;
    QPointer<QWidget> m_label;
};

} // namespace orvia
