#pragma once

#include "Theme/Theme.h"

#include <QPointer>
#include <QWidget>

#include <optional>

class QVariantAnimation;

namespace orvia {

class Button;
class IconButton;
class Label;
class SheetPages;

/// A panel inside the window over a scrim: a modal form or a small stack of pages.
///
///     auto* sheet = new Sheet(tr("New Product"), this);
///     sheet->setBody(form);
///     sheet->setDismissButton(tr("Cancel"));
///     sheet->setConfirmButton(tr("Create"));
///     connect(sheet->confirmButton(), &QAbstractButton::clicked, this, …);
///     sheet->open();
///
/// While it is open the focus stays inside it, Escape dismisses it, and Return clicks the confirming button
/// when it is enabled and no other control takes the key. Closing gives the focus back to where it was and
/// deletes the sheet. A sheet opened from within another one lies over it and darkens only that one.
class Sheet : public QWidget {
    Q_OBJECT

public:
    enum class Kind {
        form,     ///< 440 wide, as high as its contents
        settings, ///< 480 x 580
    };

    /// @p host is any widget in the window to cover. The sheet belongs to that window and is not shown yet.
    Sheet(const QString& title, QWidget* host, Kind kind = Kind::form);
    ~Sheet() override;

    QString title() const;
    /// The first page's contents, with the body's padding round them; they scroll when the window is too low.
    void setBody(QWidget* body);
    /// The button at the leading edge that dismisses the sheet.
    Button* setDismissButton(const QString& label);
    /// The primary button at the trailing edge, which Return clicks. It does nothing by itself.
    Button* setConfirmButton(const QString& label);
    Button* confirmButton() const { return m_confirm; }
    Button* dismissButton() const { return m_dismiss; }
    /// Where the focus goes when the sheet opens; otherwise the first control of the body, else of the
    /// header.
    void setInitialFocus(QWidget* widget) { m_initialFocus = widget; }

    /// Shows @p page in place of the present one, with a back button in the header and @p trailing (may be
    /// null) beside the confirming button. The page brings its own scrolling and belongs to the sheet, like
    /// @p trailing.
    void pushPage(const QString& title, QWidget* page, QWidget* trailing = nullptr);
    /// Goes back one page and deletes the one that was left. Does nothing on the first page.
    void popPage();
    int pageCount() const;

    void open();
    /// Closes the sheet. A second call does nothing.
    void dismiss();
    bool isOpen() const { return m_state == State::open; }

    /// Keeps @p widget, a child of the window, above every sheet.
    static void keepAbove(QWidget* widget);
    /// The topmost open sheet of @p widget's window, or null.
    static Sheet* topmost(const QWidget* widget);

    /// Lengths of the body's padding, for pages that are pushed.
    static constexpr QMargins bodyPadding{16, 16, 16, 18};

Q_SIGNALS:
    /// The sheet is closing; it deletes itself once it has faded.
    void dismissed();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    enum class State { prepared, open, closing };

    void buildHeader(const QString& title);
    void layoutPanel();
    void layoutHeader();
    void keepFocusInside(QWidget* now);
    void focusFirst();
    QWidget* firstFocusable(QWidget* within) const;
    QWidget* nextFocusable(QWidget* from, bool next) const;
    void animatePanel(bool in);
    void showShare(qreal share, bool in);
    void finishClosing();
    void showHeaderOfPage();

    Kind m_kind;
    State m_state = State::prepared;
    QWidget* m_panel;
    QWidget* m_header;
    Label* m_title;
    IconButton* m_back;
    Button* m_dismiss = nullptr;
    Button* m_confirm = nullptr;
    SheetPages* m_pages;
    QPointer<Sheet> m_below;
    QPointer<QWidget> m_initialFocus;
    QPointer<QWidget> m_lastFocus;
    QPointer<QWidget> m_focusBefore;
    bool m_ringBefore = false;
    QPointer<QVariantAnimation> m_movement;
    qreal m_share = 0; ///< how far the sheet is in, from 0 to 1
    int m_rise = 0;    ///< how far below its place the panel is, in pixels
};

} // namespace orvia
