#pragma once

#include "Models/Conversation.h"
#include "Views/ConversationListView/SnoozeExpiries.h"

#include <QAbstractListModel>
#include <QElapsedTimer>
#include <QTimer>

#include <functional>
#include <optional>
#include <vector>

namespace orvia {

class Session;
struct ConversationRow;

/// The inbox as the session filters and orders it, kept up to date event by event.
///
/// Changes are collected and applied together once control returns to the event loop, at most about sixty
/// times a second. Applying one costs the same whatever the inbox holds, but for moving the row's place in
/// one array. Afterwards the rows are those of @c Session::filteredConversations. A replaced inbox resets the
/// model at once, and a changed filter or a burst that touches hundreds of rows with the next application.
class ConversationListModel : public QAbstractListModel {
    Q_OBJECT

public:
    using Clock = std::function<Instant()>;

    /// Answered beside the name, which is the display text, and the accessible text.
    enum Role {
        conversationIdRole = Qt::UserRole,
    };

    explicit ConversationListModel(Session& session, Clock now = currentInstant, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    /// Finds the next visitor whose name begins with a typed text without asking for every row's data.
    QModelIndexList match(const QModelIndex& start, int role, const QVariant& value, int hits,
                          Qt::MatchFlags flags) const override;

    /// The conversation of a row; null for a row that is not there.
    const Conversation* conversation(int row) const;
    /// What a row shows at this moment.
    ConversationRow row(int row) const;
    /// The row of the conversation with this id, or -1.
    int rowOf(const QString& conversationId) const;
    Instant now() const { return m_now(); }

    /// Whether changes wait to be applied.
    bool hasPendingChanges() const;
    /// Applies them now instead of with the event loop's next turn.
    void applyChanges();

Q_SIGNALS:
    /// Surround every change of the rows, however many signals of a model it takes.
    void changesAboutToBeApplied();
    void changesApplied();

private:
    /// A listed conversation: its place in the order and its position in the session's inbox.
    struct Entry {
        Instant at;
        qsizetype position;
    };
    /// What was last applied for one position of the inbox.
    struct Standing {
        std::optional<Instant> listedAt; ///< absent while it is not listed
        bool isPending = false;
    };

    static bool precedes(const Entry& left, const Entry& right);
    std::size_t placeOf(const Entry& entry) const;

    void connectSession();
    void agentChanged();
    void markChanged(qsizetype position);
    void markChanged(const QString& conversationId);
    void scheduleRebuild();
    void scheduleApplication();
    void rebuild();
    void collectEntries();
    void applyChange(qsizetype position, Instant now);
    void insertRow(const Entry& entry);
    void removeRow(const Entry& entry);
    void moveRow(const Entry& from, const Entry& to);
    void armExpiry();
    void applyExpiredSnoozes();

    Session& m_session;
    const Clock m_now;
    std::vector<Entry> m_entries;
    std::vector<Standing> m_standings;
    std::vector<qsizetype> m_pending;
    SnoozeExpiries m_expiries;
    std::optional<QString> m_agentId;
    bool m_rebuildPending = false;
    QTimer m_application;
    QTimer m_expiry;
    QElapsedTimer m_sinceApplication;
};

} // namespace orvia
