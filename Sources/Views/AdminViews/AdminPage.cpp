#include "Views/AdminViews/AdminPage.h"

#include "Session/Session.h"
#include "Views/Widgets/Button.h"
#include "Views/Widgets/EmptyState.h"

#include <QShowEvent>
#include <QVBoxLayout>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

QCoro::Task<void> nothing()
{
    co_return;
}

} // namespace

AdminPage::AdminPage(const QString& title, const QString& createHelpText, Session& session, QWidget* parent)
    : QWidget(parent)
    , m_title(title)
    , m_session(&session)
    , m_create(new IconButton(u"plus"_s, createHelpText, this))
{
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins({});
    column->setSpacing(0);
    setAccessibleName(title);
    // The header that takes the button shows it.
    m_create->hide();
    connect(m_create, &QAbstractButton::clicked, this, &AdminPage::create);
}

void AdminPage::setList(AdminListView* list)
{
    m_list = list;
    layout()->addWidget(list);
    connect(list, &QAbstractItemView::clicked, this, &AdminPage::edit);
    connect(list, &QAbstractItemView::activated, this, &AdminPage::edit);
}

void AdminPage::setEmptyState(EmptyState* empty)
{
    m_empty = empty;
    layout()->addWidget(empty);
    refreshEmptyState();
}

void AdminPage::refreshEmptyState()
{
    if (!m_empty)
        return;
    const bool isEmpty = m_wasLoaded && m_list->rows().rowCount() == 0;
    m_list->setVisible(!isEmpty);
    m_empty->setVisible(isEmpty);
}

bool AdminPage::showCreate() const
{
    return m_createSheet && m_createSheet->isOpen();
}

FormSheet* AdminPage::editSheet() const
{
    return m_editSheet && m_editSheet->isOpen() ? m_editSheet.data() : nullptr;
}

FormSheet* AdminPage::makeEditSheet(int)
{
    return nullptr;
}

void AdminPage::create()
{
    if (!m_session || showCreate() || editSheet())
        return;
    m_createSheet = makeCreateSheet();
    m_createSheet->open();
}

void AdminPage::edit(const QModelIndex& index)
{
    // A double click, or a desktop that activates with one click, asks twice.
    if (!m_session || showCreate() || editSheet() || !index.isValid())
        return;
    m_editSheet = makeEditSheet(index.row());
    if (m_editSheet)
        m_editSheet->open();
}

FormSheet::Done AdminPage::reloading()
{
    return [page = QPointer<AdminPage>(this)] { return page ? page->reload() : nothing(); };
}

void AdminPage::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    // A window that comes back from the task bar shows what it showed.
    if (!event->spontaneous())
        reload();
}

} // namespace orvia
