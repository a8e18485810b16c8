#pragma once

#include "Session/SessionFixture.h"
#include "Views/ConversationDetailView/Composer/ComposerField.h"
#include "Views/ConversationDetailView/Composer/MessageComposer.h"
#include "Views/ConversationDetailView/ConversationComposer.h"
#include "Views/Widgets/Button.h"

#include <QTest>
#include <QVBoxLayout>

namespace orvia::test {

/// The composer of conversation "c1" at the bottom of an active window, over a session whose live channel is
/// up. A button above it stands for the rest of the console.
class ComposerFixture : public SessionFixture {
protected:
    static constexpr const char* messagesPath = "/v1/agent/conversations/c1/messages";
    static constexpr const char* attachmentsPath = "/v1/agent/conversations/c1/attachments";

    ComposerFixture()
    {
        teammates = {self, makeAgent(u"a2"_s, u"Anna Berg"_s), makeAgent(u"a3"_s, u"Joanna Reyes"_s),
                     makeAgent(u"a4"_s, u"Zoe Quist"_s, AgentRole::agent, QStringList{u"p2"_s})};
    }
    ~ComposerFixture() override { window.reset(); }

    /// Signs in and shows the composer.
    void open()
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
    void type(const QString& text) { QTest::keyClicks(&field(), text); }
    static void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
    }
    static void click(QWidget& widget) { QTest::mouseClick(&widget, Qt::LeftButton); }

    ComposerField& field() { return composer->messageComposer()->field(); }
    QString text() { return composer->messageComposer()->text(); }
    /// The button with this object name.
    BusyButton& button(const QString& name) { return *composer->findChild<BusyButton*>(name); }

    std::unique_ptr<QWidget> window;
    QPushButton* elsewhere = nullptr;
    ConversationComposer* composer = nullptr; ///< belongs to the window
};

} // namespace orvia::test
