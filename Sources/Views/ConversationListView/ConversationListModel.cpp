#include "Views/ConversationListView/ConversationListModel.h"

#include "Session/Session.h"
#include "Views/ConversationListView/ConversationRow.h"

#include <algorithm>

namespace orvia {

using namespace std::chrono_literals;

namespace {

/// One frame of a display at sixty hertz.
constexpr std::chrono::milliseconds applicationInterval = 16ms;
/// From here on one reset costs a view less than following every row.
constexpr std::size_t longestIncrementalBurst = 256;
/// The timer's clock stands still while the machine sleeps, so a far expiry is looked at again now and then.
constexpr std::chrono::milliseconds longestExpiryWait = 10min;

} // namespace

ConversationListModel::ConversationListModel(Session& session, Clock now, QObject* parent)
    : QAbstractListModel(parent)
    , m_session(session)
    , m_now(std::move(now))
{
    m_application.setSingleShot(true);
    m_application.setTimerType(Qt::PreciseTimer);
    connect(&m_application, &QTimer::timeout, this, &ConversationListModel::applyChanges);
    m_expiry.setSingleShot(true);
    m_expiry.setTimerType(Qt::PreciseTimer);
    connect(&m_expiry, &QTimer::timeout, this, &ConversationListModel::applyExpiredSnoozes);
    connectSession();
    rebuild();
}

void ConversationListModel::connectSession()
{
    connect(&m_session, &Session::conversationsReset, this, &ConversationListModel::rebuild);
    const auto changed = qOverload<qsizetype>(&ConversationListModel::markChanged);
    connect(&m_session, &Session::conversationInserted, this, changed);
    connect(&m_session, &Session::conversationChanged, this, changed);
    const auto changedById = qOverload<const QString&>(&ConversationListModel::markChanged);
    connect(&m_session, &Session::typingPreviewChanged, this, changedById);
    connect(&m_session, &Session::viewersChanged, this, changedById);

    connect(&m_session, &Session::statusFilterChanged, this, &ConversationListModel::scheduleRebuild);
    connect(&m_session, &Session::productFilterChanged, this, &ConversationListModel::scheduleRebuild);
    connect(&m_session, &Session::queueChanged, this, &ConversationListModel::scheduleRebuild);
    connect(&m_session, &Session::showSnoozedChanged, this, &ConversationListModel::scheduleRebuild);
    connect(&m_session, &Session::agentChanged, this, &ConversationListModel::agentChanged);
    connect(&m_session, &Session::productsChanged, this, [this] {
        if (!m_entries.empty())
            Q_EMIT dataChanged(index(0), index(rowCount() - 1));
    });
}

int ConversationListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_entries.size());
}

QVariant ConversationListModel::data(const QModelIndex& index, int role) const
{
    const Conversation* shown = index.isValid() ? conversation(index.row()) : nullptr;
    if (!shown)
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return shown->visitor.name;
    case Qt::AccessibleTextRole:
        return ConversationRow::of(m_session, *shown, now()).accessibleText(now());
    case conversationIdRole:
        return shown->id;
    default:
        return {};
    }
}

QModelIndexList ConversationListModel::match(const QModelIndex& start, int role, const QVariant& value,
                                             int hits, Qt::MatchFlags flags) const
{
    const bool isTypeAhead = role == Qt::DisplayRole && hits == 1 && flags.testFlag(Qt::MatchStartsWith);
    if (!isTypeAhead || !start.isValid())
        return QAbstractListModel::match(start, role, value, hits, flags);
    const QString text = value.toString();
    const int count = rowCount();
    const int last = flags.testFlag(Qt::MatchWrap) ? start.row() + count : count;
    for (int candidate = start.row(); candidate < last; ++candidate) {
        const Conversation* shown = conversation(candidate % count);
        if (shown && shown->visitor.name.startsWith(text, Qt::CaseInsensitive))
            return {index(candidate % count)};
    }
    return {};
}

const Conversation* ConversationListModel::conversation(int row) const
{
    if (row < 0 || row >= rowCount())
        return nullptr;
    const qsizetype position = m_entries[static_cast<std::size_t>(row)].position;
    return position < m_session.conversations().size() ? &m_session.conversations().at(position) : nullptr;
}

ConversationRow ConversationListModel::row(int row) const
{
    const Conversation* shown = conversation(row);
    return shown ? ConversationRow::of(m_session, *shown, now()) : ConversationRow();
}

int ConversationListModel::rowOf(const QString& conversationId) const
{
    const qsizetype position = m_session.conversations().indexOf(conversationId);
    if (position < 0 || position >= static_cast<qsizetype>(m_standings.size()))
        return -1;
    const auto& listedAt = m_standings[static_cast<std::size_t>(position)].listedAt;
    return listedAt ? static_cast<int>(placeOf({*listedAt, position})) : -1;
}

bool ConversationListModel::hasPendingChanges() const
{
    return m_rebuildPending || !m_pending.empty();
}

bool ConversationListModel::precedes(const Entry& left, const Entry& right)
{
    return left.at != right.at ? left.at > right.at : left.position < right.position;
}

std::size_t ConversationListModel::placeOf(const Entry& entry) const
{
    const auto place = std::lower_bound(m_entries.begin(), m_entries.end(), entry, precedes);
    return static_cast<std::size_t>(place - m_entries.begin());
}

void ConversationListModel::agentChanged()
{
    const auto& agent = m_session.agent();
    const std::optional<QString> id = agent ? std::optional(agent->id) : std::nullopt;
    // An agent's preferences change nothing here, and only one queue asks who the agent is.
    if (std::exchange(m_agentId, id) != id && m_session.queue() == InboxQueue::mine)
        scheduleRebuild();
}

void ConversationListModel::markChanged(const QString& conversationId)
{
    const qsizetype position = m_session.conversations().indexOf(conversationId);
    if (position >= 0)
        markChanged(position);
}

void ConversationListModel::markChanged(qsizetype position)
{
    const auto slot = static_cast<std::size_t>(position);
    if (slot >= m_standings.size())
        m_standings.resize(slot + 1);
    if (m_standings[slot].isPending)
        return;
    m_standings[slot].isPending = true;
    m_pending.push_back(position);
    scheduleApplication();
}

void ConversationListModel::scheduleRebuild()
{
    m_rebuildPending = true;
    scheduleApplication();
}

void ConversationListModel::scheduleApplication()
{
    if (m_application.isActive())
        return;
    const qint64 interval = applicationInterval.count();
    const qint64 elapsed = m_sinceApplication.isValid() ? m_sinceApplication.elapsed() : interval;
    m_application.start(static_cast<int>(std::clamp<qint64>(interval - elapsed, 0, interval)));
}

void ConversationListModel::applyChanges()
{
    m_application.stop();
    m_sinceApplication.start();
    if (m_rebuildPending || m_pending.size() > longestIncrementalBurst) {
        rebuild();
        return;
    }
    if (m_pending.empty())
        return;
    Q_EMIT changesAboutToBeApplied();
    const Instant instant = now();
    const std::vector<qsizetype> pending = std::exchange(m_pending, {});
    for (const qsizetype position : pending)
        applyChange(position, instant);
    armExpiry();
    Q_EMIT changesApplied();
}

void ConversationListModel::rebuild()
{
    m_application.stop();
    m_rebuildPending = false;
    m_pending.clear();
    Q_EMIT changesAboutToBeApplied();
    beginResetModel();
    collectEntries();
    endResetModel();
    armExpiry();
    Q_EMIT changesApplied();
}

void ConversationListModel::collectEntries()
{
    const Instant instant = now();
    const ConversationStore& inbox = m_session.conversations();
    m_agentId = m_session.agent() ? std::optional(m_session.agent()->id) : std::nullopt;
    m_entries.clear();
    m_standings.assign(static_cast<std::size_t>(inbox.size()), {});
    m_expiries.clear();
    for (qsizetype position = 0; position < inbox.size(); ++position) {
        const Conversation& candidate = inbox.at(position);
        m_expiries.set(position, candidate.snoozedUntil, instant);
        if (!m_session.isListed(candidate, instant))
            continue;
        const Instant at = candidate.lastMessageAt.value_or(Instant::min());
        m_standings[static_cast<std::size_t>(position)].listedAt = at;
        m_entries.push_back({at, position});
    }
    std::sort(m_entries.begin(), m_entries.end(), precedes);
}

void ConversationListModel::applyChange(qsizetype position, Instant instant)
{
    Standing& standing = m_standings[static_cast<std::size_t>(position)];
    standing.isPending = false;
    const Conversation& current = m_session.conversations().at(position);
    m_expiries.set(position, current.snoozedUntil, instant);

    const std::optional<Instant> before = standing.listedAt;
    std::optional<Instant> after;
    if (m_session.isListed(current, instant))
        after = current.lastMessageAt.value_or(Instant::min());
    standing.listedAt = after;

    if (before && after)
        moveRow({*before, position}, {*after, position});
    else if (before)
        removeRow({*before, position});
    else if (after)
        insertRow({*after, position});
}

void ConversationListModel::insertRow(const Entry& entry)
{
    const std::size_t place = placeOf(entry);
    const int row = static_cast<int>(place);
    beginInsertRows({}, row, row);
    m_entries.insert(m_entries.begin() + static_cast<std::ptrdiff_t>(place), entry);
    endInsertRows();
}

void ConversationListModel::removeRow(const Entry& entry)
{
    const std::size_t place = placeOf(entry);
    const int row = static_cast<int>(place);
    beginRemoveRows({}, row, row);
    m_entries.erase(m_entries.begin() + static_cast<std::ptrdiff_t>(place));
    endRemoveRows();
}

void ConversationListModel::moveRow(const Entry& from, const Entry& to)
{
    const std::size_t source = placeOf(from);
    const std::size_t gap = placeOf(to);
    const std::size_t target = gap > source ? gap - 1 : gap;
    const auto at = [this](std::size_t place) {
        return m_entries.begin() + static_cast<std::ptrdiff_t>(place);
    };
    if (source == target) {
        *at(source) = to;
    } else {
        beginMoveRows({}, static_cast<int>(source), static_cast<int>(source), {}, static_cast<int>(gap));
        *at(source) = to;
        if (source < target)
            std::rotate(at(source), at(source + 1), at(target + 1));
        else
            std::rotate(at(target), at(source), at(source + 1));
        endMoveRows();
    }
    const QModelIndex changed = index(static_cast<int>(target));
    Q_EMIT dataChanged(changed, changed);
}

void ConversationListModel::armExpiry()
{
    const std::optional<Instant> next = m_expiries.next();
    if (!next) {
        m_expiry.stop();
        return;
    }
    m_expiry.start(std::clamp<std::chrono::milliseconds>(*next - now(), 1ms, longestExpiryWait));
}

void ConversationListModel::applyExpiredSnoozes()
{
    for (const qsizetype position : m_expiries.takeExpired(now()))
        markChanged(position);
    armExpiry();
}

} // namespace orvia
