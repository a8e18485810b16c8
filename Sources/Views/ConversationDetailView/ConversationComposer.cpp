#include "Views/ConversationDetailView/ConversationComposer.h"

#include "ComposerLogic/CannedMatching.h"
#include "ComposerLogic/MentionComposer.h"
#include "Session/Answers.h"
#include "Theme/Theme.h"
#include "Views/ConversationDetailView/Composer/ComposerField.h"
#include "Views/ConversationDetailView/Composer/MessageComposer.h"
#include "Views/ConversationDetailView/Composer/PickedFile.h"
#include "Views/ConversationDetailView/Composer/SuggestionList.h"

#include <QBoxLayout>
#include <QCoreApplication>
#include <QKeyEvent>

#include <algorithm>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

constexpr int cannedLimit = 6;
constexpr QMargins suggestionMargins{12, 0, 12, 10};

} // namespace

ConversationComposer::ConversationComposer(Session& session, QString conversationId, QWidget* parent)
    : QWidget(parent)
    , m_session(session)
    , m_conversationId(std::move(conversationId))
{
    m_mentions = new MentionSuggestionList(this);
    connect(m_mentions, &MentionSuggestionList::selected, this, [this](const Agent& agent) {
        insertMention(agent);
        focusField();
    });
    m_cannedSuggestions = new CannedSuggestionList(this);
    connect(m_cannedSuggestions, &CannedSuggestionList::selected, this,
            [this](const CannedResponse& response) {
                insertCanned(response);
                focusField();
            });
    for (SuggestionList* list :
         {static_cast<SuggestionList*>(m_mentions), static_cast<SuggestionList*>(m_cannedSuggestions)}) {
        list->hide();
        connect(list, &SuggestionList::leaveRequested, this, &ConversationComposer::focusField);
        connect(list, &SuggestionList::keyForTextPressed, this, &ConversationComposer::passToField);
    }

    m_composer = new MessageComposer(this);
    connect(m_composer, &MessageComposer::textChanged, this, &ConversationComposer::textChanged);
    connect(m_composer, &MessageComposer::noteChanged, this, &ConversationComposer::noteChanged);
    connect(m_composer, &MessageComposer::sendRequested, this, &ConversationComposer::send);
    connect(m_composer, &MessageComposer::attachRequested, this, &ConversationComposer::attachRequested);
    connect(m_composer, &MessageComposer::fileInserted, this, &ConversationComposer::upload);
    connect(&m_composer->field(), &ComposerField::leaveUpwardRequested, this, [this] {
        if (SuggestionList* list = shownList())
            list->enterFromBelow();
    });
    m_mentions->setTabPredecessor(&m_composer->field());
    m_cannedSuggestions->setTabPredecessor(&m_composer->field());
    followSession();

    auto* suggestions = new QVBoxLayout;
    suggestions->setContentsMargins(suggestionMargins);
    suggestions->addWidget(m_mentions);
    suggestions->addWidget(m_cannedSuggestions);
    m_suggestions = new QWidget(this);
    m_suggestions->setLayout(suggestions);
    m_suggestions->hide();

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_suggestions);
    column->addWidget(m_composer);
}

ConversationComposer::~ConversationComposer()
{
    // The draft is gone, and teammates would look at it for minutes.
    if (m_session.token())
        m_session.sendTyping(m_conversationId, {});
}

void ConversationComposer::followSession()
{
    // What the offered teammates depend on besides the text.
    connect(&m_session, &Session::assignableAgentsChanged, this, &ConversationComposer::updateSuggestions);
    connect(&m_session, &Session::agentChanged, this, &ConversationComposer::updateSuggestions);
    connect(&m_session, &Session::conversationsReset, this, &ConversationComposer::updateSuggestions);
    const auto one = [this](qsizetype index) {
        if (m_session.conversations().at(index).id == m_conversationId)
            updateSuggestions();
    };
    connect(&m_session, &Session::conversationInserted, this, one);
    connect(&m_session, &Session::conversationChanged, this, one);
}

void ConversationComposer::setCanned(std::vector<CannedResponse> canned)
{
    m_canned = std::move(canned);
    updateSuggestions();
}

bool ConversationComposer::isUploading() const
{
    return m_composer->isUploading();
}

void ConversationComposer::focusField()
{
    m_composer->focusField();
}

std::vector<Agent> ConversationComposer::mentionMatches() const
{
    const Conversation* conversation = m_session.conversations().find(m_conversationId);
    // Finding the query first spares every keystroke of a reply the list of agents.
    if (!conversation || !MentionComposer::query(m_composer->text(), m_composer->isNote()))
        return {};
    const std::optional<QString> selfId =
        m_session.agent() ? std::optional(m_session.agent()->id) : std::nullopt;
    return MentionComposer::matches(m_session.agents(conversation->productId), selfId, m_composer->text(),
                                    m_composer->isNote());
}

std::vector<CannedResponse> ConversationComposer::cannedMatches() const
{
    return CannedMatching::matches(m_composer->text(), m_canned, cannedLimit);
}

void ConversationComposer::updateSuggestions()
{
    std::vector<Agent> mentions = mentionMatches();
    std::vector<CannedResponse> canned;
    if (mentions.empty())
        canned = cannedMatches();
    if (mentions == m_mentions->matches() && canned == m_cannedSuggestions->matches())
        return;
    // A row that goes must not take the focus with it.
    if (m_mentions->holdsFocus() || m_cannedSuggestions->holdsFocus())
        focusField();
    const bool hasMentions = !mentions.empty();
    const bool hasCanned = !canned.empty();
    m_mentions->setMatches(std::move(mentions));
    m_cannedSuggestions->setMatches(std::move(canned));
    m_mentions->setVisible(hasMentions);
    m_cannedSuggestions->setVisible(hasCanned);
    m_suggestions->setVisible(hasMentions || hasCanned);
    updateReturnHint();
}

SuggestionList* ConversationComposer::shownList() const
{
    if (m_mentions->rowCount() > 0)
        return m_mentions;
    return m_cannedSuggestions->rowCount() > 0 ? m_cannedSuggestions : nullptr;
}

void ConversationComposer::updateReturnHint()
{
    // Who does not see the list appear must hear that Return does not send now.
    const SuggestionList* list = shownList();
    m_composer->field().setAccessibleDescription(list ? tr("Return inserts %1").arg(list->row(0)->lead())
                                                      : QString());
}

void ConversationComposer::passToField(QKeyEvent* event)
{
    focusField();
    QCoreApplication::sendEvent(&m_composer->field(), event);
}

void ConversationComposer::insertMention(const Agent& agent)
{
    m_composer->setText(MentionComposer::inserting(agent, m_composer->text()));
    const bool isPicked = std::any_of(m_pickedMentions.begin(), m_pickedMentions.end(),
                                      [&](const Agent& picked) { return picked.id == agent.id; });
    if (!isPicked)
        m_pickedMentions.push_back(agent);
}

void ConversationComposer::insertCanned(const CannedResponse& response)
{
    m_composer->setText(response.body);
}

void ConversationComposer::textChanged(const QString& text)
{
    m_session.sendTyping(m_conversationId, m_composer->isNote() ? QString() : text);
    updateSuggestions();
}

void ConversationComposer::noteChanged(bool isNote)
{
    m_session.sendTyping(m_conversationId, isNote ? QString() : m_composer->text());
    updateSuggestions();
}

void ConversationComposer::send()
{
    if (const std::vector<Agent> mentions = mentionMatches(); !mentions.empty()) {
        insertMention(mentions.front());
        return;
    }
    if (const std::vector<CannedResponse> canned = cannedMatches(); !canned.empty()) {
        insertCanned(canned.front());
        return;
    }
    const QString body = m_composer->text();
    if (body.trimmed().isEmpty() || m_composer->isSending())
        return;
    const bool note = m_composer->isNote();
    const QStringList mentions = note ? MentionComposer::sendableIds(m_pickedMentions, body) : QStringList();
    // Undoing would bring a note's text back without its mentions, perhaps into a reply.
    m_composer->discardText();
    m_pickedMentions.clear();
    m_composer->setSending(true);
    sendDraft(body, note, mentions);
}

QCoro::Task<void> ConversationComposer::sendDraft(QString body, bool note, QStringList mentions)
{
    const QPointer<ConversationComposer> self = this;
    co_await m_session.sendMessage(m_conversationId, std::move(body), note, std::move(mentions));
    if (self)
        m_composer->setSending(false);
}

void ConversationComposer::upload(const QUrl& fileURL)
{
    auto read = readPickedFile(fileURL);
    if (const auto* failure = std::get_if<PickedFileFailure>(&read)) {
        m_session.showBanner(*failure == PickedFileFailure::tooLarge
                                 ? tr("Attachments are limited to 10MB.")
                                 : tr("Could not read the selected file."));
        return;
    }
    auto& file = std::get<PickedFile>(read);
    ++m_uploads;
    m_composer->setUploading(true);
    uploadFile(std::move(file.name), std::move(file.mimeType), std::move(file.data), m_composer->isNote());
}

QCoro::Task<void> ConversationComposer::uploadFile(QString name, QString mimeType, QByteArray bytes,
                                                   bool note)
{
    const QPointer<ConversationComposer> self = this;
    const QPointer<Session> session = &m_session;
    // The upload goes on when the agent opens another conversation, and still belongs to this one.
    const QString conversationId = m_conversationId;
    auto request = m_session.client().uploadAttachment(conversationId, std::move(name), std::move(mimeType),
                                                       std::move(bytes), note);
    const auto message = co_await m_session.answerTo(std::move(request));
    if (session && message)
        session->append(*message, conversationId);
    if (self)
        m_composer->setUploading(--m_uploads > 0);
}

} // namespace orvia
