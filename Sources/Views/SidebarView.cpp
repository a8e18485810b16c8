#include "Views/SidebarView.h"

#include "Session/Session.h"
#include "Theme/Theme.h"
#include "Views/StatusStrip.h"
#include "Views/Widgets/Button.h"
#include "Views/Widgets/Label.h"
#include "Views/Widgets/ScrollArea.h"
#include "Views/Widgets/SidebarList.h"
#include "Views/Widgets/Switch.h"

#include <QPainter>
#include <QVBoxLayout>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

constexpr int headingHeight = 24;
constexpr int sectionGap = 12;
constexpr int switchRowHeight = 28;

constexpr InboxQueue queues[] = {InboxQueue::all, InboxQueue::unassigned, InboxQueue::mine};
constexpr ConversationStatus statuses[] = {ConversationStatus::open, ConversationStatus::closed};

template <class Value, size_t count>
int rowOf(const Value (&values)[count], Value value)
{
    return static_cast<int>(std::find(std::begin(values), std::end(values), value) - std::begin(values));
}

Label* makeHeading(const QString& text)
{
    auto* heading = new Label(text, TextRole::captionStrong, ColorRole::textTertiary);
    heading->setContentsMargins(Spacing::large, 0, Spacing::large, 0);
    heading->setMinimumHeight(headingHeight);
    return heading;
}

} // namespace

SidebarView::SidebarView(Session& session, QWidget* parent)
    : QWidget(parent)
    , m_session(session)
    , m_products(new SidebarList(tr("Products")))
    , m_queue(new SidebarList(tr("Queue")))
    , m_status(new SidebarList(tr("Status")))
    , m_showSnoozed(new Switch(tr("Show snoozed")))
{
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins({});
    column->setSpacing(0);
    column->addWidget(buildTitle());
    auto* scroll = new ScrollArea(this);
    scroll->setWidget(buildFilters());
    column->addWidget(scroll, 1);
    column->addWidget(new StatusStrip(session, this));

    m_queue->setRows(
        {{u"inbox-all"_s, tr("All")}, {u"inbox"_s, tr("Unassigned")}, {u"person"_s, tr("Mine")}});
    m_status->setRows({{u"status-open"_s, tr("Open")}, {u"status-closed"_s, tr("Closed")}});
    refreshProducts();
    selectQueue();
    selectStatus();
    m_showSnoozed->setChecked(session.showSnoozed());
    connectFilters();
}

QWidget* SidebarView::buildTitle()
{
    auto* band = new QWidget(this);
    band->setFixedHeight(Metric::titleBand);
    auto* line = new QHBoxLayout(band);
    line->setContentsMargins(Spacing::large, 0, Spacing::small, 0);
    line->addWidget(new Label(tr("Orvia"), TextRole::heading));
    line->addStretch();
    auto* settings = new IconButton(u"gear"_s, tr("Settings"), band, 18);
    connect(settings, &QAbstractButton::clicked, this, &SidebarView::settingsRequested);
    line->addWidget(settings);
    return band;
}

QWidget* SidebarView::buildFilters()
{
    auto* filters = new QWidget;
    auto* column = new QVBoxLayout(filters);
    column->setContentsMargins(0, 0, 0, Spacing::large);
    column->setSpacing(0);
    for (SidebarList* list : {m_products, m_queue, m_status}) {
        column->addWidget(makeHeading(list->accessibleName()));
        column->addWidget(list);
        column->addSpacing(sectionGap);
    }
    column->addSpacing(Spacing::xSmall);
    column->addWidget(buildSnoozedRow());
    column->addStretch();
    return filters;
}

QWidget* SidebarView::buildSnoozedRow()
{
    auto* row = new QWidget;
    row->setMinimumHeight(switchRowHeight);
    auto* line = new QHBoxLayout(row);
    line->setContentsMargins(Spacing::large, 0, Spacing::large, 0);
    auto* label = new ElidedLabel(tr("Show snoozed"));
    line->addWidget(label, 1);
    line->addWidget(m_showSnoozed);
    m_showSnoozed->setLabel(label);
    return row;
}

void SidebarView::connectFilters()
{
    connect(m_products, &SidebarList::rowChosen, this, [this](int row) {
        const std::vector<Product>& products = m_session.products();
        const auto position = static_cast<size_t>(row);
        m_session.setProductFilter(position == 0 || position > products.size()
                                       ? std::nullopt
                                       : std::optional(products[position - 1].id));
    });
    connect(m_queue, &SidebarList::rowChosen, this, [this](int row) { m_session.setQueue(queues[row]); });
    connect(m_status, &SidebarList::rowChosen, this,
            [this](int row) { m_session.setStatusFilter(statuses[row]); });
    connect(m_showSnoozed, &QCheckBox::toggled, this, [this](bool on) { m_session.setShowSnoozed(on); });
    connect(&m_session, &Session::productsChanged, this, &SidebarView::refreshProducts);
    connect(&m_session, &Session::productFilterChanged, this, &SidebarView::selectProduct);
    connect(&m_session, &Session::queueChanged, this, &SidebarView::selectQueue);
    connect(&m_session, &Session::statusFilterChanged, this, &SidebarView::selectStatus);
    connect(&m_session, &Session::showSnoozedChanged, this, [this] {
        m_showSnoozed->setChecked(m_session.showSnoozed());
        m_session.refreshConversations();
    });
}

void SidebarView::refreshProducts()
{
    std::vector<SidebarList::Row> rows{{u"inbox-all"_s, tr("All Products")}};
    for (const Product& product : m_session.products())
        rows.push_back({u"box"_s, product.name});
    m_products->setRows(std::move(rows));
    selectProduct();
}

void SidebarView::selectProduct()
{
    const std::optional<QString>& filter = m_session.productFilter();
    if (!filter) {
        m_products->selectRow(0);
        return;
    }
    const std::vector<Product>& products = m_session.products();
    const auto found = std::ranges::find(products, *filter, &Product::id);
    m_products->selectRow(found == products.end() ? -1 : static_cast<int>(found - products.begin()) + 1);
}

void SidebarView::selectQueue()
{
    m_queue->selectRow(rowOf(queues, m_session.queue()));
}

void SidebarView::selectStatus()
{
    m_status->selectRow(rowOf(statuses, m_session.statusFilter()));
}

void SidebarView::paintEvent(QPaintEvent*)
{
    QPainter(this).fillRect(rect(), Theme::color(ColorRole::sidebar));
}

} // namespace orvia
