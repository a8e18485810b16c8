#pragma once

#include <QComboBox>

namespace orvia {

/// A choice among a few rows, as wide as its text. To assistive tools a combo box whose name is the chosen
/// row (as Qt fixes it) and whose description is its label.
class Picker : public QComboBox {
    Q_OBJECT

public:
    explicit Picker(const QString& label, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void showPopup() override;

private:
    void colorPopup();
};

} // namespace orvia
