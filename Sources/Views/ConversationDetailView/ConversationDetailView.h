#pragma once

#include "Session/Session.h"
#include "Views/ConversationDetailView/FilePicker.h"
#include "Views/ConversationDetailView/Transcript/TranscriptView.h"

#include <QTimer>
#include <QWidget>

namespace orvia {

class ConversationActionsMenu;
class ConversationComposer;
class ConversationHeaderBar;
class ConversationPresenceLine;
class ConversationTitleBand;

/// The column of one conversation: title and buttons, assignment, snooze and mute, who else is looking, the
/// transcript, and the composer. It is made for one conversation and thrown away with it; what the agent had
/// not sent goes with it.
///
/// Showing it loads the conversation and its canned responses. It follows the session by itself; changes
/// within one turn of the event loop show at once.
class ConversationDetailView : public QWidget {
    Q_OBJECT

public:
    /// What the view takes from its surroundings.
    struct Environment {
        std::function<Instant()> now = currentInstant;
        FilePicker pickFile = desktopFilePicker();
        TranscriptView::URLOpener openURL = {}; ///< the desktop's default handler unless set
    };

    /// @p session outlives the view.
    ConversationDetailView(Session& session, QString conversationId, QWidget* parent = nullptr);
    ConversationDetailView(Session& session, QString conversationId, Environment environment,
                           QWidget* parent = nullptr);

    const QString& conversationId() const { return m_conversationId; }
    TranscriptView& transcript() { return *m_transcript; }
    ConversationActionsMenu& actionsMenu() { return *m_menu; }
    ConversationComposer& composer() { return *m_composer; }

protected:
    void showEvent(QShowEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    enum class Load { none, running, done, failed };

    QCoro::Task<void> load();
    void loadAgain();
    void followSession();
    void buildLayout();
    void scheduleRefresh() { m_refreshTimer.start(); }
    void refresh();
    void refreshHeader(const Conversation& conversation);
    void openActionsMenu();
    void pickFile();
    const Conversation* conversation() const { return m_session.conversations().find(m_conversationId); }

    Session& m_session;
    const QString m_conversationId;
    const Environment m_environment;
    ConversationTitleBand* m_titleBand;
    ConversationHeaderBar* m_headerBar;
    ConversationPresenceLine* m_presenceLine;
    TranscriptView* m_transcript;
    ConversationComposer* m_composer;
    ConversationActionsMenu* m_menu;
    QTimer m_refreshTimer;
    QTimer m_clockTimer; ///< the snooze's next change of words, or its end
    Load m_load = Load::none;
};

} // namespace orvia
