#pragma once

#include "Models/Agent.h"
#include "Models/Product.h"

#include <QCoro/QCoroTask>
#include <QPointer>
#include <QUrl>
#include <QWidget>

#include <vector>

namespace orvia {

class CannedSuggestionList;
class MentionSuggestionList;
class MessageComposer;
class Session;
class SuggestionList;

/// The bottom of the conversation view: the draft of a reply or an internal note, its suggestions, sending,
/// the typing signal, and the upload of an attachment. The draft lives as long as this widget.
class ConversationComposer : public QWidget {
    Q_OBJECT

public:
    /// @p session outlives the composer.
    ConversationComposer(Session& session, QString conversationId, QWidget* parent = nullptr);
    ~ConversationComposer() override;

    /// The canned responses to offer.
    void setCanned(std::vector<CannedResponse> canned);

    MessageComposer* messageComposer() const { return m_composer; }
    bool isUploading() const;
    void focusField();

    /// Inserts the first suggestion on show, or sends the draft.
    void send();
    /// Uploads the file at @p fileURL as a reply, or as a note in note mode. What cannot be read or is too
    /// large only raises a banner.
    void upload(const QUrl& fileURL);

Q_SIGNALS:
    /// The agent wants to choose a file to upload.
    void attachRequested();

private:
    std::vector<Agent> mentionMatches() const;
    std::vector<CannedResponse> cannedMatches() const;
    void updateSuggestions();
    SuggestionList* shownList() const;
    void updateReturnHint();
    void followSession();
    void passToField(QKeyEvent* event);
    void insertMention(const Agent& agent);
    void insertCanned(const CannedResponse& response);
    void textChanged(const QString& text);
    void noteChanged(bool isNote);
    QCoro::Task<void> sendDraft(QString body, bool note, QStringList mentions);
    QCoro::Task<void> uploadFile(QString name, QString mimeType, QByteArray bytes, bool note);

    Session& m_session;
    const QString m_conversationId;
    std::vector<CannedResponse> m_canned;
    std::vector<Agent> m_pickedMentions;
    int m_uploads = 0; ///< in flight
    QWidget* m_suggestions;
    MentionSuggestionList* m_mentions;
    CannedSuggestionList* m_cannedSuggestions;
    MessageComposer* m_composer;
};

} // namespace orvia
