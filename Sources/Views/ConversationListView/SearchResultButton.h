#pragma once

#include "Models/Instant.h"
#include "Views/ConversationListView/SearchResultRow.h"
#include "Views/ConversationListView/SnippetLayout.h"

#include <QAbstractButton>

#include <memory>

namespace orvia {

class TimeTick;

/// One search hit: a button as wide as its list and as high as its snippet asks. Return clicks it like Space.
class SearchResultButton : public QAbstractButton {
    Q_OBJECT

public:
    SearchResultButton(SearchResultRow row, TimeTick& tick, QWidget* parent = nullptr);

    /// Shows other values, as when the search text grows while the hits stay.
    void setRow(SearchResultRow row);

    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;

Q_SIGNALS:
    /// The keyboard's focus has come to this hit.
    void focused();
    /// The highlight has come or gone, which the separator of the row above follows.
    void highlightChanged();

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    const SnippetLayout& snippet(int width) const;
    void followTheme();
    bool isAboveHighlight() const;
    void paintFirstLine(QPainter& painter, const QRect& line) const;

    SearchResultRow m_row;
    TimeTick& m_tick;
    mutable std::unique_ptr<SnippetLayout> m_snippet; ///< for the width last asked for
    int m_firstLine = 0;
    int m_tagLine = 0;
    bool m_showsFocus = false;
};

} // namespace orvia
