#include "ComposerFixture.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QVBoxLayout>

namespace orvia::test {

CannedResponse makeCanned(const QString& shortcut, const QString& body)
{
    CannedResponse canned;
    canned.id = shortcut;
    canned.shortcut = shortcut;
    canned.body = body;
    return canned;
}

ComposerFixture::ComposerFixture()
{
    teammates = {self, makeAgent(u"a2"_s, u"Anna Berg"_s), makeAgent(u"a3"_s, u"Joanna Reyes"_s),
                 makeAgent(u"a4"_s, u"Zoe Quist"_s, AgentRole::agent, QStringList{u"p2"_s})};
}

ComposerFixture::~ComposerFixture()
{
    window.reset();
}

void ComposerFixture::open()
{
    scriptInbox({makeConversation(u"c1"_s)});
    connectLive();
    window = std::make_unique<QWidget>();
    elsewhere = new QPushButton(window.get());
    composer = new ConversationComposer(*session, u"c1"_s, window.get());
    auto* column = new QVBoxLayout(window.get());
    column->setContentsMargins({});
    column->addWidget(elsewhere);
    column->addStretch();
    column->addWidget(composer);
    window->resize(550, 700);
    window->show();
    window->activateWindow();
    QCoreApplication::processEvents();
    composer->focusField();
}

void ComposerFixture::press(Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    QTest::keyClick(QApplication::focusWidget(), key, modifiers);
}

QStringList ComposerFixture::rows()
{
    QStringList leads;
    for (const auto* list : composer->findChildren<SuggestionList*>()) {
        for (int index = 0; list->isVisible() && index < list->rowCount(); ++index)
            leads.append(list->row(index)->lead());
    }
    return leads;
}

SuggestionRow& ComposerFixture::row(int index)
{
    auto* mentions = composer->findChild<MentionSuggestionList*>();
    auto* canned = composer->findChild<CannedSuggestionList*>();
    return mentions->rowCount() > 0 ? *mentions->row(index) : *canned->row(index);
}

QStringList ComposerFixture::previews()
{
    // What is on the way when another frame is asked for has arrived when that one has.
    service.channel()->sendFrame(ServerChannel::ping, "flush");
    QStringList found;
    spinFor(std::chrono::milliseconds(20));
    for (const QString& frame : service.channel()->texts()) {
        const QJsonObject object = QJsonDocument::fromJson(frame.toUtf8()).object();
        if (object.value("type"_L1) == "typing"_L1) {
            EXPECT_EQ(object.value("conversationId"_L1).toString(), u"c1"_s);
            found.append(object.value("preview"_L1).toString());
        }
    }
    return found;
}

QJsonValue ComposerFixture::sent(const QString& key, std::size_t index)
{
    const QByteArray body = bodyOf(service.requests("POST", messagesPath), index);
    return QJsonDocument::fromJson(body).object().value(key);
}

void ComposerFixture::acceptMessage(const QString& id)
{
    service.answer("POST", messagesPath,
                   answerOf(MessageResponse{makeMessage(id, u"c1"_s, MessageSender::agent, u"Sent"_s)}));
}

} // namespace orvia::test
