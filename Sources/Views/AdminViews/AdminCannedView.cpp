#include "Views/AdminViews/AdminCannedView.h"

#include "Session/Answers.h"
#include "Views/AdminViews/CreateCannedSheet.h"
#include "Views/AdminViews/RowControls.h"
#include "Views/Widgets/Button.h"
#include "Views/Widgets/EmptyState.h"

#include <QMenu>
#include <QStyle>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

constexpr int leastRowHeight = 60;
constexpr int deleteIconSize = 18;
constexpr int deleteButtonRoom = Metric::iconButton + Spacing::medium;

} // namespace

AdminCannedView::AdminCannedView(Session& session, QWidget* parent)
    : AdminRecordsPage<CannedResponse>(tr("Canned Responses"), tr("New canned response"), session, parent,
                                       [this](const CannedResponse& response) { return rowOf(response); })
{
    setList(new AdminListView(title(), model(), leastRowHeight, true, deleteButtonRoom, this));
    list()->setSelectionMode(QAbstractItemView::ExtendedSelection);
    setEmptyState(new EmptyState(u"canned-empty-large"_s, tr("No Canned Responses")));
    addDeleteButtons();
    connect(list(), &AdminListView::deleteRequested, this, [this] { deleteAt(list()->chosenRows()); });
    connect(list(), &AdminListView::menuRequested, this, &AdminCannedView::showMenu);
    connect(&session, &Session::productsChanged, this, [this] { model().refresh(); });
}

AdminRow AdminCannedView::rowOf(const CannedResponse& response) const
{
    const Product* product =
        response.productId && session() ? session()->product(*response.productId) : nullptr;
    AdminRow row;
    row.title = u'/' + response.shortcut;
    row.titleIsCode = true;
    row.tag = product ? product->name : tr("All products");
    row.detail = response.body;
    return row;
}

void AdminCannedView::addDeleteButtons()
{
    const auto make = [this](QWidget* parent) { return makeDeleteButton(parent); };
    const auto isWanted = [this](const QModelIndex& index) { return showsDeleteButton(index); };
    const auto fill = [this](QWidget& control, const QModelIndex& index, const QRect& content) {
        auto& button = static_cast<IconButton&>(control);
        const QString name = model().row(index.row()).title;
        // A press that began on one row must not end on another.
        if (button.accessibleDescription() != name)
            button.setDown(false);
        button.setAccessibleDescription(name);
        const QSize size = button.sizeHint();
        const QRect place(content.right() + 1 - size.width(), content.center().y() - size.height() / 2 + 1,
                          size.width(), size.height());
        button.setGeometry(QStyle::visualRect(button.layoutDirection(), content, place));
    };
    m_deleteButtons = new RowControls(*list(), {make, isWanted, fill});
}

bool AdminCannedView::showsDeleteButton(const QModelIndex& index) const
{
    return list()->isUnderPointer(index) || list()->selectionModel()->isSelected(index)
           || (list()->hasFocus() && list()->currentIndex() == index);
}

QWidget* AdminCannedView::makeDeleteButton(QWidget* parent)
{
    auto* button = new IconButton(u"trash"_s, tr("Delete"), parent, deleteIconSize);
    connect(button, &QAbstractButton::clicked, this, [this, button] {
        if (const QModelIndex index = m_deleteButtons->indexOf(button); index.isValid())
            deleteAt({index.row()});
    });
    return button;
}

void AdminCannedView::showMenu(const QPoint& position)
{
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    connect(menu->addAction(tr("Delete")), &QAction::triggered, this,
            [this] { deleteAt(list()->chosenRows()); });
    menu->popup(position);
}

QCoro::Task<std::vector<CannedResponse>> AdminCannedView::fetch() const
{
    return session()->client().adminCanned();
}

FormSheet* AdminCannedView::makeCreateSheet()
{
    return new CreateCannedSheet(*session(), this, reloading());
}

void AdminCannedView::apply(std::vector<CannedResponse> loaded)
{
    // What is still being deleted is gone for the agent, whatever a load meanwhile says.
    std::erase_if(loaded,
                  [this](const CannedResponse& response) { return m_deleting.contains(response.id); });
    AdminRecordsPage<CannedResponse>::apply(std::move(loaded));
}

void AdminCannedView::deleteAt(const std::vector<int>& positions)
{
    if (!session())
        return;
    QStringList ids;
    for (const int position : positions) {
        ids.append(model().record(position).id);
        m_deleting.insert(ids.constLast());
    }
    // A load that began before may still bring the rows.
    m_appliedLoad = m_startedLoads;
    model().remove(positions);
    refreshEmptyState();
    deleteInTurn(this, session(), ids);
}

QCoro::Task<void> AdminCannedView::deleteInTurn(QPointer<AdminCannedView> view, QPointer<Session> session,
                                                QStringList ids)
{
    if (!session)
        co_return;
    const quint64 signOuts = session->signOuts();
    for (const QString& id : ids) {
        co_await session->answerTo(session->client().adminDeleteCanned(id));
        // A sign-out ends it: what follows would be done in someone else's name.
        if (!session || session->signOuts() != signOuts)
            co_return;
        if (view)
            view->m_deleting.remove(id);
    }
    if (view)
        co_await view->reload();
}

} // namespace orvia
