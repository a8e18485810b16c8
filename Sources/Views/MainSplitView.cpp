#include "Views/MainSplitView.h"

#include "Session/Session.h"
#include "Theme/Theme.h"
#include "Views/ConversationDetailView/ConversationComposer.h"
#include "Views/ConversationDetailView/ConversationDetailView.h"
#include "Views/ConversationListView/ConversationListView.h"
#include "Views/SettingsView.h"
#include "Views/SidebarView.h"
#include "Views/SplitWidths.h"
#include "Views/VisitorPanel/VisitorPanel.h"
#include "Views/Widgets/ColumnGrip.h"
#include "Views/Widgets/EmptyState.h"
#include "Views/Widgets/Sheet.h"

#include <QPainter>
#include <QStyle>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

constexpr int lineWidth = 1;
constexpr int windowMinimumWidth = 820;
constexpr int windowMinimumHeight = 480;

} // namespace

MainSplitView::MainSplitView(Session& session, QWidget* parent)
    : QWidget(parent)
    , m_session(session)
    , m_sidebar(new SidebarView(session, this))
    , m_inbox(new ConversationListView(session, this))
    , m_noConversation(new EmptyState(u"conversations-large"_s, tr("No Conversation"),
                                      tr("Select a conversation from the list."), this))
    , m_sidebarGrip(new ColumnGrip(this))
    , m_inboxGrip(new ColumnGrip(this))
    , m_wantedSidebar(SplitWidths::sidebarIdeal)
    , m_wantedInbox(SplitWidths::inboxIdeal)
{
    connect(m_sidebar, &SidebarView::settingsRequested, this, [this] { setShowSettings(true); });
    connect(m_sidebarGrip, &ColumnGrip::dragged, this, &MainSplitView::dragSidebar);
    connect(m_inboxGrip, &ColumnGrip::dragged, this, &MainSplitView::dragInbox);
    connect(m_inbox, &ConversationListView::conversationActivated, this, [this] {
        if (m_conversation)
            m_conversation->composer().focusField();
    });
    connect(&session, &Session::selectedConversationIdChanged, this, &MainSplitView::rebuildDetail);
    connect(&session, &Session::showVisitorPanelChanged, this, &MainSplitView::updatePanel);
    rebuildDetail();
}

void MainSplitView::setShowSettings(bool show)
{
    if (show == showsSettings())
        return;
    if (!show) {
        m_settings->dismiss();
        return;
    }
    m_settings = SettingsView::present(m_session, this);
    // The sheet outlives its dismissal by the time it fades.
    connect(m_settings, &Sheet::dismissed, this, [this] { m_settings = nullptr; });
}

QSize MainSplitView::minimumSizeHint() const
{
    return {std::max(windowMinimumWidth, SplitWidths::minimumTotal(showsPanel())), windowMinimumHeight};
}

void MainSplitView::rebuildDetail()
{
    const std::optional<QString>& id = m_session.selectedConversationId();
    bool hadFocus = false;
    for (const QPointer<QWidget>& old : {QPointer<QWidget>(m_conversation), m_panel}) {
        if (old) {
            hadFocus = hadFocus || old->isAncestorOf(focusWidget());
            old->hide();
            old->deleteLater();
        }
    }
    m_conversation = nullptr;
    m_panel = nullptr;
    if (id) {
        m_conversation = new ConversationDetailView(m_session, *id, this);
        m_conversation->show();
    } else {
        window()->setWindowTitle(tr("Orvia"));
    }
    m_noConversation->setVisible(!id);
    updatePanel();
    // Left alone, the focus of a column that is gone would jump to the first control of the window. What a
    // link or a notification opened is there to be answered.
    const bool takesFocus = hadFocus || (isVisible() && !m_inbox->isChoosing());
    if (takesFocus && m_conversation && !Sheet::topmost(this))
        m_conversation->composer().focusField();
}

void MainSplitView::updatePanel()
{
    const std::optional<QString>& id = m_session.selectedConversationId();
    const bool wanted = id && m_session.showVisitorPanel();
    if (wanted && !m_panel) {
        m_panel = new VisitorPanel(m_session, *id, this);
        m_panel->show();
    } else if (!wanted && m_panel) {
        m_panel->hide();
        m_panel->deleteLater();
        m_panel = nullptr;
    }
    updateGeometry();
    layoutColumns();
}

void MainSplitView::layoutColumns()
{
    const SplitWidths widths = SplitWidths::fit(width(), m_wantedSidebar, m_wantedInbox, showsPanel());
    int x = 0;
    const auto place = [&](QWidget* column, int columnWidth, int line) {
        const QRect area(x, 0, columnWidth - line, height());
        if (column)
            column->setGeometry(QStyle::visualRect(layoutDirection(), rect(), area));
        x += columnWidth;
    };
    const auto placeGrip = [&](ColumnGrip* grip) {
        grip->setGeometry(
            QStyle::visualRect(layoutDirection(), rect(), grip->areaAround(x - lineWidth, height())));
        grip->raise();
    };
    place(m_sidebar, widths.sidebar, lineWidth);
    placeGrip(m_sidebarGrip);
    place(m_inbox, widths.inbox, lineWidth);
    placeGrip(m_inboxGrip);
    const QRect empty(x, Metric::titleBand + Metric::secondBand, widths.conversation,
                      height() - Metric::titleBand - Metric::secondBand);
    m_noConversation->setGeometry(QStyle::visualRect(layoutDirection(), rect(), empty));
    place(m_conversation, widths.conversation, showsPanel() ? lineWidth : 0);
    place(m_panel, SplitWidths::panel, 0);
    update();
}

void MainSplitView::dragSidebar(int delta)
{
    const SplitWidths now = SplitWidths::fit(width(), m_wantedSidebar, m_wantedInbox, showsPanel());
    const int room =
        width() - (showsPanel() ? SplitWidths::panel : 0) - now.inbox - SplitWidths::conversationMinimum;
    m_wantedSidebar = std::clamp(now.sidebar + delta, SplitWidths::sidebarMinimum,
                                 std::max(room, static_cast<int>(SplitWidths::sidebarMinimum)));
    layoutColumns();
}

void MainSplitView::dragInbox(int delta)
{
    const SplitWidths now = SplitWidths::fit(width(), m_wantedSidebar, m_wantedInbox, showsPanel());
    const int room =
        width() - (showsPanel() ? SplitWidths::panel : 0) - now.sidebar - SplitWidths::conversationMinimum;
    m_wantedInbox = std::clamp(now.inbox + delta, SplitWidths::inboxMinimum,
                               std::max(room, static_cast<int>(SplitWidths::inboxMinimum)));
    layoutColumns();
}

void MainSplitView::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (std::exchange(m_appeared, true))
        return;
    if (m_conversation)
        m_conversation->composer().focusField();
    else
        m_inbox->focusList();
}

void MainSplitView::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    layoutColumns();
}

void MainSplitView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), Theme::color(ColorRole::window));
    const auto line = [&](const QWidget* column) {
        const int x = isRightToLeft() ? column->x() - lineWidth : column->geometry().right() + 1;
        painter.fillRect(QRect(x, 0, lineWidth, height()), Theme::color(ColorRole::hairline));
    };
    line(m_sidebar);
    line(m_inbox);
    if (m_panel && m_conversation)
        line(m_conversation);
}

} // namespace orvia
