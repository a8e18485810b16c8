#pragma once

#include <QBasicTimer>
#include <QScrollArea>
#include <QScrollBar>

namespace orvia {

/// A scroll bar over the contents' edge: seen while scrolling or under the pointer, and without any width of
/// its own. It stands for the hidden vertical bar of a scroll area of any kind.
class OverlayScrollBar : public QScrollBar {
    Q_OBJECT

public:
    /// Replaces the vertical bar of @p area, which keeps its own one hidden. The bar belongs to @p area.
    static OverlayScrollBar* install(QAbstractScrollArea* area);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    bool event(QEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    explicit OverlayScrollBar(QAbstractScrollArea* area);
    void follow();
    void flash();

    QAbstractScrollArea* m_area;
    QBasicTimer m_fade;
    bool m_lit = false;
};

/// A scroll area without a frame, with the overlay scroll bar; its contents always take the whole width.
class ScrollArea : public QScrollArea {
    Q_OBJECT

public:
    explicit ScrollArea(QWidget* parent = nullptr);

    /// As high as the contents want to be.
    QSize sizeHint() const override;

protected:
    /// Keeps the focused control in sight.
    bool focusNextPrevChild(bool next) override;
};

} // namespace orvia
