#pragma once

#include "Theme/Theme.h"

#include <QPushButton>

namespace orvia {

/// A button of the panel without an outline. Return clicks it like the space bar.
class PanelButton : public QPushButton {
    Q_OBJECT

public:
    explicit PanelButton(QWidget* parent = nullptr);

    QSize minimumSizeHint() const override;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    bool event(QEvent* event) override;
    /// Paints one line of @p text, elided, and answers how wide it became.
    int drawLine(QPainter& painter, const QRect& area, const QString& text, const QFont& font,
                 ColorRole color) const;
};

/// A line of text that can be clicked: a link in the accent colour, with an optional title above it, or a
/// plain action in the secondary colour.
class LinkButton : public PanelButton {
    Q_OBJECT

public:
    enum class Kind { link, action };

    explicit LinkButton(Kind kind = Kind::link, QWidget* parent = nullptr);

    /// Shows @p text, under @p title unless that is empty. The accessible name is both in full.
    void setTexts(const QString& text, const QString& title = {});

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QFont textFont() const;

    Kind m_kind;
    QString m_text;
    QString m_title;
};

} // namespace orvia
