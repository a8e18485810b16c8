#include "Views/ConversationListView/SearchResultsList.h"

#include "Session/Session.h"
#include "Views/ConversationListView/SearchResultButton.h"
#include "Views/ConversationListView/TimeTick.h"

#include <QAccessibleWidget>
#include <QKeyEvent>
#include <QVBoxLayout>

namespace orvia {

namespace {

/// What holds the hits; known to assistive tools as a list.
class HitList : public QWidget {
    Q_OBJECT

public:
    using QWidget::QWidget;
};

class AccessibleHitList : public QAccessibleWidget {
public:
    explicit AccessibleHitList(QWidget* widget)
        : QAccessibleWidget(widget, QAccessible::List)
    {
    }

    static QAccessibleInterface* make(const QString&, QObject* object)
    {
        auto* list = qobject_cast<HitList*>(object);
        return list ? new AccessibleHitList(list) : nullptr;
    }
};

/// What the Tab key reaches before it would reach the widget.
QWidget* tabStopBefore(QWidget* widget)
{
    QWidget* previous = widget->previousInFocusChain();
    while (previous != widget && !(previous->focusPolicy() & Qt::TabFocus))
        previous = previous->previousInFocusChain();
    return previous;
}

} // namespace

SearchResultsList::SearchResultsList(Session& session, TimeTick& tick, QWidget* parent)
    : ScrollArea(parent)
    , m_session(session)
    , m_tick(tick)
{
    static const bool isKnown = (QAccessible::installFactory(AccessibleHitList::make), true);
    Q_UNUSED(isKnown)
    m_contents = new HitList;
    m_contents->setAccessibleName(tr("Search results"));
    auto* column = new QVBoxLayout(m_contents);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addStretch();
    setWidget(m_contents);
    // The area's own viewport shows the surroundings through.
    m_contents->setAutoFillBackground(false);

    connect(&session, &Session::searchResultsChanged, this, &SearchResultsList::rebuild);
    connect(&session, &Session::searchTextChanged, this, &SearchResultsList::updateRows);
    connect(&session, &Session::productsChanged, this, &SearchResultsList::updateRows);
    rebuild();
}

void SearchResultsList::rebuild()
{
    for (SearchResultButton* row : std::exchange(m_rows, {})) {
        row->hide();
        row->deleteLater();
    }
    auto* column = static_cast<QVBoxLayout*>(m_contents->layout());
    QWidget* previous = tabStopBefore(this);
    for (const SearchResult& result : m_session.searchResults()) {
        auto* row = new SearchResultButton(SearchResultRow::of(m_session, result), m_tick, m_contents);
        const auto number = m_rows.size();
        connect(row, &QAbstractButton::clicked, this, [this, number] {
            if (number < m_session.searchResults().size())
                Q_EMIT chosen(m_session.searchResults()[number]);
        });
        connect(row, &SearchResultButton::focused, this, [this, row] { setTabStop(row); });
        connect(row, &SearchResultButton::highlightChanged, this, [this, number] {
            if (number > 0 && number <= m_rows.size())
                m_rows[number - 1]->update();
        });
        column->insertWidget(static_cast<int>(number), row);
        // New widgets would come last of all in the window when the keyboard goes round.
        setTabOrder(std::exchange(previous, row), row);
        m_rows.push_back(row);
    }
    if (!m_rows.empty())
        setTabStop(m_rows.front());
    verticalScrollBar()->setValue(0);
}

void SearchResultsList::updateRows()
{
    const auto& results = m_session.searchResults();
    for (std::size_t number = 0; number < std::min(m_rows.size(), results.size()); ++number)
        m_rows[number]->setRow(SearchResultRow::of(m_session, results[number]));
}

void SearchResultsList::setTabStop(SearchResultButton* tabStop)
{
    for (SearchResultButton* row : m_rows)
        row->setFocusPolicy(row == tabStop ? Qt::StrongFocus : Qt::ClickFocus);
}

void SearchResultsList::focusFirst()
{
    focusRow(0);
}

qsizetype SearchResultsList::focusedRow() const
{
    const auto found =
        std::find_if(m_rows.begin(), m_rows.end(), [](const QWidget* row) { return row->hasFocus(); });
    return found == m_rows.end() ? -1 : found - m_rows.begin();
}

void SearchResultsList::focusRow(qsizetype number)
{
    if (m_rows.empty())
        return;
    const auto last = static_cast<qsizetype>(m_rows.size()) - 1;
    SearchResultButton* row = m_rows[static_cast<std::size_t>(std::clamp<qsizetype>(number, 0, last))];
    row->setFocus(Qt::TabFocusReason);
    ensureWidgetVisible(row, 0, 0);
}

void SearchResultsList::keyPressEvent(QKeyEvent* event)
{
    constexpr qsizetype pageRows = 5;
    switch (event->key()) {
    case Qt::Key_Up:
        focusRow(focusedRow() - 1);
        break;
    case Qt::Key_Down:
        focusRow(focusedRow() + 1);
        break;
    case Qt::Key_PageUp:
        focusRow(focusedRow() - pageRows);
        break;
    case Qt::Key_PageDown:
        focusRow(focusedRow() + pageRows);
        break;
    case Qt::Key_Home:
        focusRow(0);
        break;
    case Qt::Key_End:
        focusRow(static_cast<qsizetype>(m_rows.size()) - 1);
        break;
    default:
        ScrollArea::keyPressEvent(event);
    }
}

} // namespace orvia

#include "SearchResultsList.moc"
