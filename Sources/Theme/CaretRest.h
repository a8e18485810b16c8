#pragma once

#include <QObject>
#include <QTimer>

namespace orvia {

/// Lets the caret of the focused field stop blinking once nobody has typed or clicked for a while, so that an
/// unattended console does not wake up twice a second. The caret stays visible, and blinks again at the next
/// key or click. Lives beside the application object.
class CaretRest : public QObject {
    Q_OBJECT

public:
    explicit CaretRest(std::chrono::milliseconds patience = std::chrono::seconds(10),
                       QObject* parent = nullptr);
    ~CaretRest() override;

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void rest();
    void wake();

    int m_flashTime; ///< as the desktop has it, in milliseconds
    QTimer m_patience;
};

} // namespace orvia
