#pragma once

#include "Views/Widgets/FocusReturn.h"

#include <QWidget>

class QStackedWidget;

namespace orvia {

class ConversationListModel;
class ConversationRowDelegate;
class ElidedLabel;
class EmptyState;
class IconButton;
class RowListView;
class SearchField;
class SearchResultsList;
class Session;
class TimeTick;

/// The middle column of the main screen: the conversations that pass the sidebar's filters, or, while the
/// search field holds a text, what the search found. Holds no state; everything follows the session, of which
/// it writes the selection and the search text. The session outlives it.
class ConversationListView : public QWidget {
    Q_OBJECT

public:
    explicit ConversationListView(Session& session, QWidget* parent = nullptr);

    /// The name of the product whose conversations are listed, else "Conversations".
    QString listTitle() const;
    /// Whether the agent is choosing a conversation in this column at this moment.
    bool isChoosing() const { return m_isChoosing; }
    /// Gives the focus to the conversations, or to what stands in their place until they come.
    void focusList();

Q_SIGNALS:
    /// Return or a double click on a row: the agent wants to answer the selected conversation.
    void conversationActivated();

protected:
    void paintEvent(QPaintEvent* event) override;
    /// Down in the search field goes on to what stands below it.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* makeTitleBand();
    QWidget* makeSearchBand();
    void makeList();
    void makePages();
    void connectSession();
    void connectSearch();
    void followTheme();

    bool isSearchShown() const;
    void updateTitle();
    void updateSearchField();
    void updatePage();
    void showPage(QWidget* page);
    void refresh();

    void modelAboutToChange();
    void modelChanged();
    void selectionChanged();
    void followSelection(bool reveal);

    Session& m_session;
    TimeTick* m_tick;
    ConversationListModel* m_model;
    ConversationRowDelegate* m_delegate;
    ElidedLabel* m_title;
    IconButton* m_refreshButton;
    FocusReturn m_refreshFocus;
    SearchField* m_searchField;
    QStackedWidget* m_pages;
    RowListView* m_list;
    EmptyState* m_emptyList;
    QWidget* m_searching;
    EmptyState* m_noResults;
    SearchResultsList* m_results;
    bool m_isFollowing = false;      ///< the list takes over what the session says; nothing is written back
    bool m_revealsSelection = false; ///< a selection made elsewhere waits for its row
    bool m_isChoosing = false;
    bool m_startsAtTop = false; ///< a filter changed, so that the next rows are other ones
};

} // namespace orvia
