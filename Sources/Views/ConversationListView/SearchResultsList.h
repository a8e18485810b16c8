#pragma once

#include "Models/Conversation.h"
#include "Views/Widgets/ScrollArea.h"

#include <vector>

namespace orvia {

class SearchResultButton;
class Session;
class TimeTick;

/// The session's search hits in its order, one button each. One of them takes part in the tab order; the
/// arrow keys, Home and End move the focus among them.
class SearchResultsList : public ScrollArea {
    Q_OBJECT

public:
    SearchResultsList(Session& session, TimeTick& tick, QWidget* parent = nullptr);

    const std::vector<SearchResultButton*>& rows() const { return m_rows; }
    /// Gives the focus to the first hit, as the keyboard does.
    void focusFirst();

Q_SIGNALS:
    /// The agent wants to see this hit, one of the session's.
    void chosen(const SearchResult& result);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void rebuild();
    void updateRows();
    void setTabStop(SearchResultButton* row);
    void focusRow(qsizetype number);
    qsizetype focusedRow() const;

    Session& m_session;
    TimeTick& m_tick;
    QWidget* m_contents;
    std::vector<SearchResultButton*> m_rows;
};

} // namespace orvia
