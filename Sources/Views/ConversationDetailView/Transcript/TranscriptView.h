#pragma once

#include "Views/ConversationDetailView/Transcript/AttachmentImages.h"
#include "Views/ConversationDetailView/Transcript/HeightIndex.h"
#include "Views/ConversationDetailView/Transcript/RowLayout.h"
#include "Views/ConversationDetailView/Transcript/TranscriptContent.h"

#include <QAbstractScrollArea>
#include <QBasicTimer>
#include <QElapsedTimer>
#include <QTimer>
#include <QVariantAnimation>

#include <functional>
#include <map>
#include <memory>

class QMenu;

namespace orvia {

/// The transcript of one conversation: a list of rows of different heights, of which only those in sight are
/// ever laid out. Heights of the others are guessed until they show; whatever turns out different, the rows
/// on the screen stay where they are. Follows the session by itself; changes within one turn of the event
/// loop show at once.
///
/// Every text can be selected with the mouse and the keyboard: the arrow keys go from one bubble, picture or
/// file to the next, Return opens it, Shift with the arrow keys selects inside the text.
class TranscriptView : public QAbstractScrollArea {
    Q_OBJECT

public:
    using Part = RowLayout::Part;
    using URLOpener = std::function<void(const QUrl&)>;

    /// A place that the keyboard can be at.
    struct Stop {
        qsizetype row = -1;
        Part part = Part::none;

        bool isValid() const { return row >= 0 && part != Part::none; }
        friend bool operator==(const Stop&, const Stop&) = default;
    };

    /// @p session outlives the view.
    TranscriptView(Session& session, QString conversationId, QWidget* parent = nullptr);
    ~TranscriptView() override;

    /// What opens an attachment; the desktop's default handler unless set. It is called with web addresses
    /// only: an attachment comes from a stranger, and must not start a program or reach into local files.
    void setURLOpener(URLOpener opener) { m_openURL = std::move(opener); }

    qsizetype rowCount() const { return m_heights.size(); }
    TranscriptRow row(qsizetype index) const { return m_content.row(index); }
    /// The row's place in the viewport, guessed for a row out of sight.
    QRect rowRect(qsizetype index) const;
    /// The part's place in the viewport, empty for a row out of sight.
    QRect partRect(const Stop& stop) const;
    bool isRowInSight(qsizetype index) const;
    /// The layout of a row in or near sight, else null.
    const RowLayout* rowLayout(qsizetype index) const;
    qsizetype layoutCount() const { return static_cast<qsizetype>(m_layouts.size()); }
    /// The row at a point of the viewport, -1 outside every row.
    qsizetype rowAt(const QPoint& point) const;

    const Stop& current() const { return m_current; }
    void setCurrent(const Stop& stop);
    /// Opens a picture or file, or shows more of a long text.
    void activate(const Stop& stop);

    qsizetype selectedRow() const { return m_selectedRow; }
    const BubbleText::Selection& selection() const { return m_selection; }
    void select(qsizetype row, const BubbleText::Selection& selection);
    /// The selected text; without a selection the text that the keyboard is at. Whole even where the bubble
    /// shows only a beginning.
    QString copyableText() const;

    /// Whether the end of the newest row is kept in sight.
    bool isFollowing() const { return m_following; }

Q_SIGNALS:
    /// Messages were added at the end while the thread was open; @p spoken is what their rows say.
    void messagesArrived(const QString& spoken);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    bool viewportEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    // Content
    void followSession();
    void scheduleRefresh() { m_refreshTimer.start(); }
    void refresh();
    void rebuildHeights();
    void keepSelection(const QString& id);
    void updateRows(const TranscriptContent::State& before);
    void invalidateRow(const std::optional<QString>& id);
    void imageChanged(const QUrl& url);
    void themeChanged();
    void tellAssistiveTools(const TranscriptContent::State& before, bool replaced);

    // Arrangement
    RowLayout& layOutRow(qsizetype index);
    void arrange();
    bool layOutBand(qint64 value);
    qint64 contentHeight() const;
    qint64 lastValue() const;
    qint64 targetValue() const;
    qint64 wantedValue() const;
    qint64 contentTop(qsizetype row) const;
    void anchorAt(qint64 value);
    void scrollToTarget(bool animated);
    void ensureVisible(const Stop& stop);
    void scrollBy(int distance);

    // Interaction
    RowLayout::Look look(qsizetype row) const;
    Stop stopAt(const QPoint& point) const;
    Stop stopInSight() const;
    std::optional<Stop> neighbour(const Stop& stop, bool forward);
    void moveCurrent(bool forward);
    void moveCurrentToEnd(bool last);
    void page(bool forward);
    bool selectByKey(QKeyEvent& event);
    bool navigateByKey(QKeyEvent& event);
    qsizetype positionAt(qsizetype row, const QPoint& point) const;
    void extendSelection(const QPoint& point);
    void selectAll();
    void copy() const;
    void setHovered(const Stop& stop);
    void populateMenu(QMenu& menu, const Stop& stop);

    Session& m_session;
    const QString m_conversationId;
    TranscriptContent m_content;
    AttachmentImages m_images;
    URLOpener m_openURL;

    HeightIndex m_heights;
    std::map<qsizetype, std::unique_ptr<RowLayout>> m_layouts; ///< rows in or near sight
    QHash<QString, qsizetype> m_bodyLimits; ///< by row id, for the texts of which more is shown
    QTimer m_refreshTimer;
    bool m_replaced = true;
    bool m_arranging = false;

    bool m_following = true;
    qsizetype m_anchorRow = 0; ///< at the viewport's top edge while not following
    int m_anchorOffset = 0;    ///< how far that row begins above the edge
    qint64 m_lead = 0;         ///< how far an animated scroll still has to go
    qint64 m_leadAtStart = 0;
    QVariantAnimation m_scrollAnimation;

    Stop m_current;
    Stop m_hovered;
    Stop m_pressed;
    bool m_showsFocus = false;
    qsizetype m_selectedRow = -1;
    BubbleText::Selection m_selection;
    bool m_selectsAll = false;
    bool m_dragging = false;
    BubbleText::Selection m_dragOrigin; ///< what the press selected: nothing, a word or a paragraph
    QBasicTimer m_autoScroll;
    QElapsedTimer m_lastDoubleClick;
};

} // namespace orvia
