#pragma once

#include "Theme/Theme.h"

#include <QPushButton>

namespace orvia {

class Spinner;

/// Clicks @p button when @p event is a Return, which Qt's buttons do not take, once for as long as it is
/// held. Answers whether it is one.
bool clickOnReturn(QAbstractButton& button, const QKeyEvent& event);

/// What the console's push buttons share: a busy state with a spinner in place of the label, the size kept,
/// told to assistive tools as well; Return clicks like Space. A busy button ignores clicks.
class BusyButton : public QPushButton {
    Q_OBJECT

public:
    explicit BusyButton(QWidget* parent = nullptr);

    bool isBusy() const { return m_busy; }
    void setBusy(bool busy);

protected:
    virtual ColorRole spinnerColor() const = 0;
    bool hitButton(const QPoint& position) const override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    /// Keeps the button's hover look up to date.
    bool event(QEvent* event) override;

private:
    void placeSpinner();

    Spinner* m_spinner = nullptr;
    bool m_busy = false;
};

/// A labelled button, 30 high. The label is shown as it is: "&" marks no mnemonic.
class Button : public BusyButton {
    Q_OBJECT

public:
    enum class Kind {
        secondary,
        primary,
        destructive, ///< a secondary button with its label in the danger colour
        plain,       ///< only a label, in footnote size
    };

    explicit Button(const QString& label, Kind kind = Kind::secondary, QWidget* parent = nullptr);

    const QString& label() const { return m_label; }
    void setLabel(const QString& label);
    Kind kind() const { return m_kind; }
    /// Least height in pixels; the label's size may ask for more.
    void setMinimumButtonHeight(int height);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    ColorRole spinnerColor() const override;
    void paintEvent(QPaintEvent* event) override;

private:
    ColorRole fillRole() const;
    ColorRole labelRole() const;

    QString m_label;
    Kind m_kind;
    int m_height = Metric::buttonHeight;
};

/// A button that shows a symbol only, 30 x 30. Its help text is tooltip and accessible name.
class IconButton : public BusyButton {
    Q_OBJECT

public:
    IconButton(const QString& iconName, const QString& helpText, QWidget* parent = nullptr, int iconSize = 20,
               ColorRole color = ColorRole::icon);

    void setIconName(const QString& iconName);
    void setHelpText(const QString& helpText);
    void setColor(ColorRole color);
    /// What a checked button shows: the tile behind the symbol, and the symbol on it.
    void setCheckedColors(ColorRole tile, ColorRole symbol);
    /// Size of the button, 30 x 30 unless told otherwise.
    void setButtonSize(const QSize& size);

    QSize sizeHint() const override { return m_size; }
    QSize minimumSizeHint() const override { return m_size; }

protected:
    ColorRole spinnerColor() const override { return m_color; }
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_iconName;
    int m_iconSize;
    ColorRole m_color;
    ColorRole m_checkedTile = ColorRole::pressed;
    ColorRole m_checkedSymbol = ColorRole::textPrimary;
    QSize m_size{Metric::iconButton, Metric::iconButton};
};

} // namespace orvia
