#pragma once

#include "../Session/SessionFixture.h"
#include "Views/RootView.h"

#include <functional>

namespace orvia {

class ConversationComposer;

} // namespace orvia

namespace orvia::test {

/// How much was done in a day.
struct Tally {
    qint64 events = 0;
    int switches = 0;
    int uploads = 0;
    int drafts = 0;
    int messages = 0;
    int searches = 0;
    int sheets = 0;
    int appearances = 0;
    int reconnects = 0;
    int signIns = 0;
};

/// The console's session and window over a service in another process, and an agent who does everything that
/// the console is for, in a fixed order.
class WorkingConsole {
public:
    /// @p tell hands a line to the service.
    WorkingConsole(const QUrl& origin, std::function<void(const QByteArray& line)> tell, Tally& tally);

    /// Works through @p turns conversations while @p eventsPerTurn live events arrive at each of them.
    void work(int turns, int eventsPerTurn);
    /// Leaves everything closed that can be closed, nothing under way, and as many messages kept as may be.
    void rest();

    Session& session() { return m_session; }
    /// Every text that the banner showed.
    const QStringList& banners() const { return m_banners; }

private:
    void signIn();
    void signOut();
    void receiveLive(int events);
    void openAnother();
    void draft();
    void send();
    void upload();
    void search();
    void openSheets();
    void switchAppearance();
    void reconnect();
    void workOnConversation();
    void changeFilters();
    void refresh();
    void closeSheets();
    void fillThreads();
    ConversationComposer* composer() const;
    bool await(const char* what, const std::function<bool()>& condition);

    std::function<void(const QByteArray&)> m_tell;
    Tally& m_tally;
    QTemporaryDir m_directory;
    DefaultsStore m_defaults;
    MemoryTokenStore m_tokens;
    NetworkSession m_network;
    Session m_session;
    RootView m_window;
    QStringList m_banners;
    qint64 m_markSent = 0;
    qint64 m_markSeen = 0;
    int m_connections = 0; ///< how often the live channel came up
    int m_turn = 0;
};

} // namespace orvia::test
