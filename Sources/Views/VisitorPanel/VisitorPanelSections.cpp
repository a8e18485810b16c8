#include "Platform/Formats.h"
#include "Platform/RelativeTime.h"
#include "Session/Session.h"
#include "Views/VisitorPanel/PanelMetrics.h"
#include "Views/VisitorPanel/PanelRowWidgets.h"
#include "Views/VisitorPanel/PanelRows.h"
#include "Views/VisitorPanel/PanelSection.h"
#include "Views/VisitorPanel/VisitorPanel.h"
#include "Views/Widgets/FocusRing.h"
#include "Views/Widgets/ScrollArea.h"

#include <QVBoxLayout>

namespace orvia {

namespace {

/// Browser, language, screen and referrer.
constexpr int deviceRowCount = 4;

QString dateText(const Conversation& conversation)
{
    const auto& instant = conversation.lastMessageAt ? conversation.lastMessageAt : conversation.createdAt;
    return instant ? Formats::date(*instant) : QString();
}

/// The record of a row; an empty one beyond the last.
template <class Record>
const Record& recordAt(const std::vector<Record>& records, qsizetype row)
{
    static const Record none;
    const auto position = static_cast<std::size_t>(row);
    return position < records.size() ? records[position] : none;
}

/// The part of a row that the Tab key stops at.
QWidget* tabStop(QWidget* row)
{
    const auto* labelled = qobject_cast<LabelledRow*>(row);
    return labelled ? labelled->valueWidget() : row;
}

} // namespace

void VisitorPanel::build()
{
    setFixedWidth(PanelMetrics::width);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);

    m_area = new ScrollArea(this);
    m_area->setAccessibleName(tr("Visitor details"));
    m_area->setFocusPolicy(Qt::StrongFocus);
    m_area->viewport()->setAutoFillBackground(false);
    FocusRing::attach(m_area, 0, FocusRing::Policy::keyboard, -Spacing::hair);
    layout->addWidget(m_area);

    auto* content = new QWidget;
    m_sections = new QVBoxLayout(content);
    m_sections->setContentsMargins(PanelMetrics::sidePadding, PanelMetrics::topPadding,
                                   PanelMetrics::sidePadding, PanelMetrics::topPadding);
    m_sections->setSpacing(0);
    m_area->setWidget(content);
    content->setAutoFillBackground(false);

    buildIdentity();
    buildLocation();
    buildCurrentPage();
    buildCustomData();
    buildHistory();
    buildJourney();
    buildDevice();
    m_sections->addStretch(1);
    for (const PanelRows* rows : {m_dataRows, m_historyRows, m_journeyRows})
        connect(rows, &PanelRows::rowsChanged, this, [this] { m_tabOrder.start(0); });
    connect(m_journeyRows, &PanelRows::rowsChanged, this, &VisitorPanel::scheduleTimes);
    connect(&Theme::shared(), &Theme::changed, this, [this] {
        refreshCustomData();
        showHistory(std::move(m_history));
        showJourneyRows(0);
    });
}

PanelSection* VisitorPanel::addSection(const QString& title)
{
    auto* section = new PanelSection(title, m_area->widget());
    m_sections->addWidget(section);
    return section;
}

void VisitorPanel::buildIdentity()
{
    m_identity = new QWidget(m_area->widget());
    m_sections->addWidget(m_identity);
    auto* lines = new QVBoxLayout(m_identity);
    lines->setContentsMargins(0, 0, 0, 0);
    lines->setSpacing(Spacing::hair);
    m_name = new PanelLine(TextRole::heading, ColorRole::textPrimary, m_identity);
    lines->addWidget(m_name);

    auto* emailLine = new QHBoxLayout;
    emailLine->setSpacing(Spacing::small);
    m_email = new LinkButton(LinkButton::Kind::link, m_identity);
    m_email->setToolTip(tr("Copy email address"));
    connect(m_email, &QAbstractButton::clicked, this, &VisitorPanel::copyEmail);
    emailLine->addWidget(m_email);
    m_copied = new Label(tr("Copied"), TextRole::caption, ColorRole::textSecondary, m_identity);
    m_copied->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
    m_copied->hide();
    emailLine->addWidget(m_copied);
    emailLine->addStretch(1);
    lines->addLayout(emailLine);

    m_started = new PanelLine(TextRole::callout, ColorRole::textSecondary, m_identity);
    lines->addWidget(m_started);
    m_identity->hide();
}

void VisitorPanel::buildLocation()
{
    PanelSection* section = addSection(tr("Location"));
    m_place = new PanelLine(TextRole::callout, ColorRole::textPrimary, section);
    m_network = new PanelLine(TextRole::callout, ColorRole::textSecondary, section);
    m_ip = new PanelLine(TextRole::callout, ColorRole::textSecondary, section);
    for (PanelLine* line : {m_place, m_network, m_ip}) {
        section->contents()->addWidget(line);
        line->hide();
    }
}

void VisitorPanel::buildCurrentPage()
{
    m_currentPageSection = addSection(tr("Now viewing"));
    m_currentPage = new LinkButton(LinkButton::Kind::link, m_currentPageSection);
    m_currentPageSection->contents()->addWidget(m_currentPage);
    m_currentPageSection->hide();
    connect(m_currentPage, &QAbstractButton::clicked, this,
            [this] { openAddress(m_meta.url.value_or(QString())); });
}

void VisitorPanel::buildCustomData()
{
    m_dataSection = addSection(tr("Custom data"));
    const auto pair = [this](qsizetype row) -> const OrderedStringMap::Pair& {
        return recordAt(m_data, row);
    };
    PanelRows::Delegate delegate;
    delegate.make = [this, pair](QWidget* parent) -> QWidget* {
        auto* row = new LabelledRow(parent);
        connect(row, &LabelledRow::linkClicked, this, [this, row, pair] {
            if (const auto url = webURL(pair(m_dataRows->indexOf(row)).value))
                open(*url);
        });
        return row;
    };
    delegate.fill = [this, pair](QWidget& row, qsizetype index) {
        static_cast<LabelledRow&>(row).setTexts(pair(index).key, pair(index).value,
                                                webURL(pair(index).value).has_value(),
                                                placeInList(*m_dataRows, index));
    };
    m_dataRows = new PanelRows(*m_area, std::move(delegate), m_dataSection);
    m_dataSection->contents()->addWidget(m_dataRows);
    m_dataSection->hide();
}

void VisitorPanel::buildHistory()
{
    m_historySection = addSection(tr("Previous conversations"));
    PanelRows::Delegate delegate;
    delegate.make = [this](QWidget* parent) -> QWidget* {
        auto* row = new HistoryRow(parent);
        connect(row, &QAbstractButton::clicked, this, [this, row] {
            const QString id = recordAt(m_history, m_historyRows->indexOf(row)).id;
            // Opening another conversation may end this panel; the click must be over by then.
            QMetaObject::invokeMethod(
                &m_session, [&session = m_session, id] { session.openFromDeepLink(id); },
                Qt::QueuedConnection);
        });
        return row;
    };
    delegate.fill = [this](QWidget& row, qsizetype index) {
        const Conversation& conversation = recordAt(m_history, index);
        const bool isOpen = conversation.status == ConversationStatus::open;
        static_cast<HistoryRow&>(row).setTexts(isOpen ? tr("Open") : tr("Closed"), dateText(conversation),
                                               conversation.lastMessagePreview.value_or(QString()),
                                               placeInList(*m_historyRows, index));
    };
    m_historyRows = new PanelRows(*m_area, std::move(delegate), m_historySection);
    m_historySection->contents()->addWidget(m_historyRows);
    m_historySection->hide();
}

void VisitorPanel::buildJourney()
{
    m_journeySection = addSection(tr("Journey"));
    PanelRows::Delegate delegate;
    delegate.make = [this](QWidget* parent) -> QWidget* {
        auto* row = new JourneyRow(parent);
        connect(row, &QAbstractButton::clicked, this,
                [this, row] { openAddress(page(m_journeyRows->indexOf(row)).url.value_or(QString())); });
        return row;
    };
    delegate.fill = [this](QWidget& row, qsizetype index) {
        const VisitorPage& visited = page(index);
        static_cast<JourneyRow&>(row).setTexts(
            pageLabel(visited), visited.at ? relativeTime(*visited.at, m_surroundings.now()) : QString(),
            placeInList(*m_journeyRows, index));
    };
    m_journeyRows = new PanelRows(*m_area, std::move(delegate), m_journeySection);
    m_journeySection->contents()->addWidget(m_journeyRows);
    m_journeyToggle = new LinkButton(LinkButton::Kind::action, m_journeySection);
    m_journeySection->contents()->addWidget(m_journeyToggle, 0, Qt::AlignLeading);
    connect(m_journeyToggle, &QAbstractButton::clicked, this, [this] {
        m_showAllPages = !m_showAllPages;
        showJourneyRows(0);
    });
    m_journeySection->hide();
}

void VisitorPanel::buildDevice()
{
    m_deviceSection = addSection(tr("Device"));
    for (int row = 0; row < deviceRowCount; ++row) {
        m_deviceRows.push_back(new LabelledRow(m_deviceSection));
        m_deviceRows.back()->setMinimumHeight(LabelledRow::rowHeight());
        m_deviceSection->contents()->addWidget(m_deviceRows.back());
    }
    m_deviceSection->hide();
}

void VisitorPanel::orderTabs()
{
    std::vector<QWidget*> stops{m_area, m_email, m_currentPage};
    for (const PanelRows* rows : {m_dataRows, m_historyRows, m_journeyRows}) {
        for (const auto& [index, row] : rows->rows())
            stops.push_back(tabStop(row));
    }
    stops.push_back(m_journeyToggle);
    for (LabelledRow* row : m_deviceRows)
        stops.push_back(row->valueWidget());
    for (std::size_t stop = 1; stop < stops.size(); ++stop)
        setTabOrder(stops[stop - 1], stops[stop]);
}

} // namespace orvia
