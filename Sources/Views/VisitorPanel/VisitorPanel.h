#pragma once

#include "Models/Conversation.h"
#include "Models/Instant.h"
#include "Views/VisitorPanel/VisitorHelpers.h"

#include <QPointer>
#include <QTimer>
#include <QUrl>
#include <QWidget>

#include <chrono>
#include <functional>
#include <optional>
#include <vector>

class QVBoxLayout;

namespace orvia {

class LabelledRow;
class LinkButton;
class Label;
class PanelLine;
class PanelRows;
class PanelSection;
class ScrollArea;
class Session;

/// The column beside an open conversation that describes its visitor. It reads the session's conversation and
/// follows it; the visitor's earlier conversations are all that it fetches, whenever it is shown and whenever
/// the visitor's address changes.
class VisitorPanel : public QWidget {
    Q_OBJECT

public:
    /// What the panel takes from the desktop and the clock; tests hand in their own.
    struct Surroundings {
        std::function<void(const QUrl&)> openURL; ///< the default browser unless set
        std::function<Instant()> now = currentInstant;
        std::chrono::milliseconds copiedShown = std::chrono::seconds(2);  ///< how long "Copied" stands
        std::chrono::milliseconds leastRefresh = std::chrono::minutes(1); ///< least spacing of time refreshes
    };

    VisitorPanel(Session& session, QString conversationId, QWidget* parent = nullptr);
    VisitorPanel(Session& session, QString conversationId, Surroundings surroundings,
                 QWidget* parent = nullptr);

    const QString& conversationId() const { return m_conversationId; }

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void build();
    void buildIdentity();
    void buildLocation();
    void buildCurrentPage();
    void buildCustomData();
    void buildHistory();
    void buildJourney();
    void buildDevice();
    PanelSection* addSection(const QString& title);

    void conversationTouched(qsizetype index);
    void scheduleRefresh();
    void refresh();
    void refreshIdentity();
    void refreshLocation();
    void refreshCurrentPage();
    void refreshCustomData();
    void refreshJourney(const std::vector<VisitorPage>& before);
    void refreshDevice();
    void showHistory(std::vector<Conversation> history);
    void showJourneyRows(qsizetype added);
    void loadHistory();

    void copyEmail();
    void openAddress(const QString& address) const;
    void open(const QUrl& url) const;
    void refreshTimes();
    void scheduleTimes();
    void orderTabs();
    QString placeInList(const PanelRows& rows, qsizetype index) const;
    const std::vector<VisitorPage>& pages() const;
    /// The page of a row of the journey, which lists the newest first; an empty one beyond the last.
    const VisitorPage& page(qsizetype row) const;

    Session& m_session;
    const QString m_conversationId;
    Surroundings m_surroundings;

    std::optional<Conversation> m_conversation;
    VisitorMeta m_meta; ///< of that conversation; empty where it has none
    std::vector<OrderedStringMap::Pair> m_data;
    std::vector<Conversation> m_history;
    bool m_showAllPages = false;
    quint64 m_historyGeneration = 0; ///< raised by every load, so that a late answer is known as such

    ScrollArea* m_area = nullptr;
    QVBoxLayout* m_sections = nullptr;
    QWidget* m_identity = nullptr;
    PanelLine* m_name = nullptr;
    LinkButton* m_email = nullptr;
    Label* m_copied = nullptr;
    PanelLine* m_started = nullptr;
    PanelLine* m_place = nullptr;
    PanelLine* m_network = nullptr;
    PanelLine* m_ip = nullptr;
    PanelSection* m_currentPageSection = nullptr;
    LinkButton* m_currentPage = nullptr;
    PanelSection* m_dataSection = nullptr;
    PanelRows* m_dataRows = nullptr;
    PanelSection* m_historySection = nullptr;
    PanelRows* m_historyRows = nullptr;
    PanelSection* m_journeySection = nullptr;
    PanelRows* m_journeyRows = nullptr;
    LinkButton* m_journeyToggle = nullptr;
    PanelSection* m_deviceSection = nullptr;
    std::vector<LabelledRow*> m_deviceRows;

    QTimer m_refresh;
    QTimer m_times;
    QTimer m_tabOrder;
};

} // namespace orvia
