#pragma once

#include "Theme/Theme.h"

#include <QLineEdit>

namespace orvia {

class IconButton;
class Spinner;

/// A one-line field with the outline and the focus ring of the console. Its label is its accessible name, and
/// its placeholder unless another one is set. Return is offered to the surroundings after @c returnPressed.
class TextField : public QLineEdit {
    Q_OBJECT

public:
    /// The two looks of a field: 28 high in forms, 36 on the sign-in screen.
    enum class Size { form, large };

    explicit TextField(const QString& label, QWidget* parent = nullptr, Size size = Size::form);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    /// Paints the field's own background and outline under the text.
    void paintEvent(QPaintEvent* event) override;

private:
    void applyTheme();

    Size m_size;
};

/// A field whose text is hidden. It cannot be copied, and assistive tools know it as a password.
class SecureField : public TextField {
    Q_OBJECT

public:
    explicit SecureField(const QString& label, QWidget* parent = nullptr, Size size = Size::form);
};

/// The field for search texts: a magnifying glass at its leading edge; at its trailing edge a spinner while
/// searching, else, with a text in it, a button that asks to clear it.
class SearchField : public QLineEdit {
    Q_OBJECT

public:
    SearchField(const QString& placeholder, const QString& clearHelpText, QWidget* parent = nullptr);

    void setSearching(bool searching);
    bool isSearching() const { return m_searching; }
    IconButton* clearButton() const { return m_clear; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// The clear button was used, or Escape pressed with a text in the field. The field does not clear
    /// itself.
    void clearRequested();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void applyTheme();
    void updateTrailing();

    IconButton* m_clear;
    Spinner* m_spinner;
    bool m_searching = false;
};

} // namespace orvia
