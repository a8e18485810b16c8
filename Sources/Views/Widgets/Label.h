#pragma once

#include "Theme/Theme.h"

#include <QLabel>

namespace orvia {

/// A plain text in a type and colour role; follows the theme. Never interprets markup.
class Label : public QLabel {
    Q_OBJECT

public:
    explicit Label(const QString& text = {}, TextRole role = TextRole::body,
                   ColorRole color = ColorRole::textPrimary, QWidget* parent = nullptr);

    void setRole(TextRole role);
    void setColor(ColorRole color);
    TextRole role() const { return m_role; }
    ColorRole color() const { return m_color; }

private:
    void applyTheme();

    TextRole m_role;
    ColorRole m_color;
};

/// A single line that gives way: what does not fit is elided, and the tooltip then shows the whole text. The
/// whole text stays the accessible one.
class ElidedLabel : public Label {
    Q_OBJECT

public:
    explicit ElidedLabel(const QString& text = {}, TextRole role = TextRole::body,
                         ColorRole color = ColorRole::textPrimary, QWidget* parent = nullptr);

    /// Whether the text does not fit the label's present width.
    bool isElided() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QString singleLine() const;
};

} // namespace orvia
