#include "Views/ConversationListView/ConversationListView.h"

#include "Session/Session.h"
#include "Theme/Theme.h"
#include "Views/ConversationListView/ConversationListModel.h"
#include "Views/ConversationListView/ConversationRowDelegate.h"
#include "Views/ConversationListView/ListRules.h"
#include "Views/ConversationListView/RowListView.h"
#include "Views/ConversationListView/SearchResultsList.h"
#include "Views/ConversationListView/TimeTick.h"
#include "Views/Widgets/Button.h"
#include "Views/Widgets/EmptyState.h"
#include "Views/Widgets/Label.h"
#include "Views/Widgets/Spinner.h"
#include "Views/Widgets/Tag.h"
#include "Views/Widgets/TextField.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QShortcut>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

constexpr int refreshIconSize = 18;

} // namespace

ConversationListView::ConversationListView(Session& session, QWidget* parent)
    : QWidget(parent)
    , m_session(session)
    , m_tick(new TimeTick(currentInstant, TimeTick::defaultSpacing, this))
    , m_model(new ConversationListModel(session, currentInstant, this))
    , m_delegate(new ConversationRowDelegate(*m_model, *m_tick, this))
{
    setObjectName(u"ConversationListView"_s);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(makeTitleBand());
    column->addWidget(makeSearchBand());
    makeList();
    makePages();
    column->addWidget(m_pages, 1);

    for (const QKeySequence& keys : {QKeySequence(Qt::Key_F5), QKeySequence(Qt::CTRL | Qt::Key_R)})
        connect(new QShortcut(keys, this), &QShortcut::activated, m_refreshButton,
                [this] { m_refreshButton->click(); });
    connectSession();
    connectSearch();
    connect(&Theme::shared(), &Theme::changed, this, &ConversationListView::followTheme);
    followTheme();
    updateTitle();
    updateSearchField();
    updatePage();
    followSelection(true);
}

QWidget* ConversationListView::makeTitleBand()
{
    auto* band = new QWidget(this);
    band->setMinimumHeight(Metric::titleBand);
    m_title = new ElidedLabel({}, TextRole::heading, ColorRole::textPrimary, band);
    m_title->setObjectName(u"listTitle"_s);
    m_refreshButton = new IconButton(u"refresh"_s, tr("Refresh"), band, refreshIconSize);
    m_refreshButton->setObjectName(u"refresh"_s);
    connect(m_refreshButton, &QAbstractButton::clicked, this, &ConversationListView::refresh);
    auto* row = new QHBoxLayout(band);
    row->setContentsMargins(Spacing::large, 0, Spacing::small, 0);
    row->setSpacing(Spacing::xSmall);
    row->addWidget(m_title, 1);
    row->addWidget(m_refreshButton);
    return band;
}

QWidget* ConversationListView::makeSearchBand()
{
    auto* band = new QWidget(this);
    band->setMinimumHeight(Metric::secondBand);
    m_searchField = new SearchField(tr("Search conversations"), tr("Clear search"), band);
    m_searchField->setObjectName(u"search"_s);
    m_searchField->installEventFilter(this);
    auto* row = new QVBoxLayout(band);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    auto* inset = new QHBoxLayout;
    inset->setContentsMargins(Spacing::medium, 0, Spacing::medium, 0);
    inset->addWidget(m_searchField);
    row->addLayout(inset);
    row->addStretch();
    row->addSpacing(Spacing::small);
    row->addWidget(new HairLine(Qt::Horizontal, band));
    return band;
}

void ConversationListView::makeList()
{
    m_list = new RowListView(this);
    m_list->setObjectName(u"conversations"_s);
    m_list->setAccessibleName(tr("Conversations"));
    m_list->setItemDelegate(m_delegate);
    m_list->setModel(m_model);
    connect(m_model, &ConversationListModel::changesAboutToBeApplied, this,
            &ConversationListView::modelAboutToChange);
    connect(m_model, &ConversationListModel::changesApplied, this, &ConversationListView::modelChanged);
    connect(m_list->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &ConversationListView::selectionChanged);
    connect(m_list, &QAbstractItemView::activated, this, [this](const QModelIndex& index) {
        m_list->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
        Q_EMIT conversationActivated();
    });
    connect(m_tick, &TimeTick::ticked, m_list->viewport(), qOverload<>(&QWidget::update));
}

void ConversationListView::makePages()
{
    m_pages = new QStackedWidget(this);
    m_emptyList = new EmptyState(u"inbox-large"_s, {}, {}, m_pages);
    m_emptyList->setObjectName(u"emptyList"_s);
    m_noResults =
        new EmptyState(u"search-large"_s, tr("No Results"), tr("Nothing matched that search."), m_pages);
    m_noResults->setObjectName(u"noResults"_s);
    m_results = new SearchResultsList(m_session, *m_tick, m_pages);
    m_results->setObjectName(u"searchResults"_s);
    connect(m_results, &SearchResultsList::chosen, this, [this](const SearchResult& result) {
        const QScopedValueRollback choosing(m_isChoosing, true);
        m_session.openSearchResult(result);
    });

    m_searching = new QWidget(m_pages);
    m_searching->setObjectName(u"searching"_s);
    auto* spinner = new Spinner(16, ColorRole::textSecondary, m_searching);
    spinner->setAccessibleName(tr("Searching"));
    auto* centre = new QVBoxLayout(m_searching);
    centre->addWidget(spinner, 0, Qt::AlignCenter);

    for (QWidget* page : {static_cast<QWidget*>(m_list), static_cast<QWidget*>(m_emptyList), m_searching,
                          static_cast<QWidget*>(m_noResults), static_cast<QWidget*>(m_results)})
        m_pages->addWidget(page);
}

void ConversationListView::connectSession()
{
    const auto restart = [this] { m_startsAtTop = true; };
    connect(&m_session, &Session::statusFilterChanged, this, restart);
    connect(&m_session, &Session::productFilterChanged, this, restart);
    connect(&m_session, &Session::queueChanged, this, restart);
    connect(&m_session, &Session::showSnoozedChanged, this, restart);

    connect(&m_session, &Session::productFilterChanged, this, &ConversationListView::updateTitle);
    connect(&m_session, &Session::productsChanged, this, &ConversationListView::updateTitle);
    connect(&m_session, &Session::isLoadingListChanged, this, &ConversationListView::updatePage);
    connect(&m_session, &Session::queueChanged, this, &ConversationListView::refresh);
    connect(&m_session, &Session::showSnoozedChanged, this, &ConversationListView::refresh);
    connect(&m_session, &Session::selectedConversationIdChanged, this, [this] {
        if (!m_isFollowing)
            followSelection(true);
    });
}

void ConversationListView::connectSearch()
{
    connect(&m_session, &Session::searchTextChanged, this, [this] {
        updateSearchField();
        updatePage();
    });
    connect(&m_session, &Session::isSearchingChanged, this, [this] {
        updateSearchField();
        updatePage();
    });
    connect(&m_session, &Session::searchResultsChanged, this, &ConversationListView::updatePage);
    connect(m_searchField, &QLineEdit::textChanged, &m_session, &Session::setSearchText);
    connect(m_searchField, &SearchField::clearRequested, &m_session, &Session::clearSearch);
}

void ConversationListView::followTheme()
{
    m_delegate->followTheme();
    m_list->setRowHeight(m_delegate->rowHeight());
    update();
}

QString ConversationListView::listTitle() const
{
    const auto& filter = m_session.productFilter();
    const Product* product = filter ? m_session.product(*filter) : nullptr;
    return product ? product->name : tr("Conversations");
}

bool ConversationListView::isSearchShown() const
{
    return !m_session.searchText().trimmed().isEmpty();
}

void ConversationListView::updateTitle()
{
    m_title->setText(listTitle());
}

void ConversationListView::updateSearchField()
{
    if (m_searchField->text() != m_session.searchText())
        m_searchField->setText(m_session.searchText());
    m_searchField->setSearching(m_session.isSearching());
}

void ConversationListView::updatePage()
{
    m_refreshFocus.setEnabled(m_refreshButton, !m_session.isLoadingList());
    if (isSearchShown()) {
        if (!m_session.searchResults().empty())
            showPage(m_results);
        else
            showPage(m_session.isSearching() ? m_searching : m_noResults);
        return;
    }
    if (m_model->rowCount() > 0 || m_session.isLoadingList()) {
        showPage(m_list);
        return;
    }
    m_emptyList->setContents(u"inbox-large"_s,
                             ListRules::emptyTitle(m_session.queue(), m_session.statusFilter()));
    showPage(m_emptyList);
}

void ConversationListView::showPage(QWidget* page)
{
    QWidget* before = m_pages->currentWidget();
    if (page == before)
        return;
    // The focus stays in the column when what has it makes room for something else.
    const QWidget* focused = QApplication::focusWidget();
    const bool hadFocus = focused && before->isAncestorOf(focused);
    m_pages->setCurrentWidget(page);
    if (hadFocus && page == m_list)
        m_list->setFocus(Qt::OtherFocusReason);
    else if (hadFocus)
        m_searchField->setFocus(Qt::OtherFocusReason);
}

void ConversationListView::focusList()
{
    m_pages->currentWidget()->setFocus(Qt::OtherFocusReason);
}

void ConversationListView::refresh()
{
    m_session.refreshConversations();
}

void ConversationListView::modelAboutToChange()
{
    m_isFollowing = true;
    m_list->keepPlace();
}

void ConversationListView::modelChanged()
{
    m_list->restorePlace();
    if (std::exchange(m_startsAtTop, false))
        m_list->verticalScrollBar()->setValue(0);
    m_isFollowing = false;
    followSelection(m_revealsSelection);
    updatePage();
}

void ConversationListView::selectionChanged()
{
    if (m_isFollowing)
        return;
    const QModelIndexList selected = m_list->selectionModel()->selectedIndexes();
    std::optional<QString> id;
    if (!selected.isEmpty())
        id = selected.first().data(ConversationListModel::conversationIdRole).toString();
    const QScopedValueRollback following(m_isFollowing, true);
    const QScopedValueRollback choosing(m_isChoosing, true);
    m_session.setSelectedConversationId(id);
}

/// Makes the list's selection the session's. A selected conversation that is not listed selects no row; when
/// it is listed later it comes into sight if @p reveal.
void ConversationListView::followSelection(bool reveal)
{
    const QScopedValueRollback following(m_isFollowing, true);
    const auto& id = m_session.selectedConversationId();
    const int row = id ? m_model->rowOf(*id) : -1;
    m_revealsSelection = reveal && id && m_model->hasPendingChanges();
    QItemSelectionModel* selection = m_list->selectionModel();
    if (row < 0) {
        selection->clearSelection();
        return;
    }
    const QModelIndex index = m_model->index(row);
    if (!selection->isSelected(index)) {
        m_list->setAutoScroll(reveal);
        selection->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
        m_list->setAutoScroll(true);
    } else if (reveal) {
        m_list->scrollTo(index);
    }
}

bool ConversationListView::eventFilter(QObject* watched, QEvent* event)
{
    const bool isDown = watched == m_searchField && event->type() == QEvent::KeyPress
                        && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Down;
    if (!isDown)
        return QWidget::eventFilter(watched, event);
    if (m_pages->currentWidget() == m_results)
        m_results->focusFirst();
    else if (m_pages->currentWidget() == m_list)
        m_list->setFocus(Qt::TabFocusReason);
    return true;
}

void ConversationListView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), Theme::color(ColorRole::list));
}

} // namespace orvia
