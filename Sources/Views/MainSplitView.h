#pragma once

#include <QPointer>
#include <QWidget>

namespace orvia {

class ColumnGrip;
class ConversationDetailView;
class ConversationListView;
class EmptyState;
class Session;
class Sheet;
class SidebarView;

/// The main screen: sidebar, inbox and the selected conversation, with the visitor's panel beside it on
/// demand.
class MainSplitView : public QWidget {
    Q_OBJECT

public:
    explicit MainSplitView(Session& session, QWidget* parent = nullptr);

    bool showsSettings() const { return m_settings != nullptr; }
    /// Opens or closes the settings sheet.
    void setShowSettings(bool show);

    QSize minimumSizeHint() const override;

protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void rebuildDetail();
    void updatePanel();
    void layoutColumns();
    void dragSidebar(int delta);
    void dragInbox(int delta);
    bool showsPanel() const { return m_panel != nullptr; }

    Session& m_session;
    SidebarView* m_sidebar;
    ConversationListView* m_inbox;
    EmptyState* m_noConversation;
    QPointer<ConversationDetailView> m_conversation;
    QPointer<QWidget> m_panel;
    ColumnGrip* m_sidebarGrip;
    ColumnGrip* m_inboxGrip;
    QPointer<Sheet> m_settings;
    int m_wantedSidebar;
    int m_wantedInbox;
    bool m_appeared = false;
};

} // namespace orvia
