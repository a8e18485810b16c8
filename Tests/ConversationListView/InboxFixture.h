#pragma once

#include "Session/SessionFixture.h"
#include "Theme/Theme.h"
#include "Views/ConversationListView/ConversationListModel.h"
#include "Views/ConversationListView/ConversationListView.h"

#include <QApplication>
#include <QStackedWidget>
#include <QTest>

namespace orvia::test {

class InboxFixture : public SessionFixture {
protected:
    /// A signed-in session with these open conversations.
    Session& sessionWith(std::vector<Conversation> open)
    {
        scriptInbox(std::move(open));
        return signIn();
    }

    /// The same with @p count conversations "c0", "c1", ..., each a minute older than the one before.
    void sessionWithMany(int count)
    {
        sessionWith({});
        const Instant newest = minutesAgo(1);
        for (int number = 0; number < count; ++number) {
            Conversation conversation = makeConversation(u"c"_s + QString::number(number));
            conversation.lastMessageAt = newest - std::chrono::minutes(number);
            deliver(conversation);
        }
    }

    /// A visitor's message comes over the live channel.
    void deliverMessage(const QString& conversationId, Instant at)
    {
        Message message = makeMessage(u"live"_s + QString::number(++m_messages), conversationId);
        message.createdAt = at;
        deliver(message);
    }

    /// The conversation as the session has it, to be changed and delivered.
    Conversation known(const QString& id) const { return *session->conversations().find(id); }

    /// The inbox column in a window of its own.
    void showColumn()
    {
        Theme::shared().apply(*qApp);
        view = std::make_unique<ConversationListView>(*session);
        view->resize(320, 700);
        view->show();
        QApplication::setActiveWindow(view.get());
        EXPECT_TRUE(QTest::qWaitForWindowExposed(view.get()));
    }
    QString shownPage() const { return view->findChild<QStackedWidget*>()->currentWidget()->objectName(); }

    static QString idAt(const QModelIndex& index)
    {
        return index.data(ConversationListModel::conversationIdRole).toString();
    }

    std::unique_ptr<ConversationListView> view;

private:
    int m_messages = 0;
};

} // namespace orvia::test
