#pragma once

#include "Views/Widgets/Button.h"

namespace orvia {

/// The round send button: filled in the colour of the composer's mode while it can send, else grey.
class SendButton : public BusyButton {
    Q_OBJECT

public:
    explicit SendButton(QWidget* parent = nullptr);

    void setNote(bool isNote);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    ColorRole spinnerColor() const override { return ColorRole::primaryButtonText; }
    void paintEvent(QPaintEvent* event) override;

private:
    bool m_isNote = false;
};

} // namespace orvia
