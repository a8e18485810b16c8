#pragma once

#include "Theme/Theme.h"

#include <QWidget>

namespace orvia {

/// A name on a faint capsule, 16 high: a conversation's product. Gives way by eliding; the whole name is its
/// accessible one.
class Tag : public QWidget {
    Q_OBJECT

public:
    explicit Tag(const QString& text, QWidget* parent = nullptr);

    const QString& text() const { return m_text; }
    void setText(const QString& text);

    /// The size of a tag with this text, for views that paint tags themselves.
    static QSize sizeFor(const QString& text);
    static void paint(QPainter& painter, const QRectF& area, const QString& text,
                      ColorRole fill = ColorRole::tag);

    QSize sizeHint() const override { return sizeFor(m_text); }
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_text;
};

/// A word in an outlined capsule, 18 high: "admin".
class BadgeLabel : public QWidget {
    Q_OBJECT

public:
    explicit BadgeLabel(const QString& text, QWidget* parent = nullptr);

    static QSize sizeFor(const QString& text);
    static void paint(QPainter& painter, const QRectF& area, const QString& text);

    QSize sizeHint() const override { return sizeFor(m_text); }
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_text;
};

/// A line one device pixel thin across the whole widget.
class HairLine : public QWidget {
    Q_OBJECT

public:
    explicit HairLine(Qt::Orientation orientation = Qt::Horizontal, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace orvia
