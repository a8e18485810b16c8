#pragma once

#include "Session/SessionFixture.h"
#include "Views/ConversationDetailView/Composer/ComposerField.h"
#include "Views/ConversationDetailView/Composer/MessageComposer.h"
#include "Views/ConversationDetailView/Composer/SuggestionList.h"
#include "Views/ConversationDetailView/ConversationComposer.h"
#include "Views/Widgets/Button.h"

#include <QTest>

namespace orvia::test {

/// The composer of conversation "c1" at the bottom of an active window, over a session whose live channel is
/// up. A button above it stands for the rest of the console.
class ComposerFixture : public SessionFixture {
protected:
    static constexpr const char* messagesPath = "/v1/agent/conversations/c1/messages";
    static constexpr const char* attachmentsPath = "/v1/agent/conversations/c1/attachments";

    ComposerFixture();
    ~ComposerFixture() override;

    /// Signs in and shows the composer.
    void open();
    void type(const QString& text) { QTest::keyClicks(&field(), text); }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {});
    void click(QWidget& widget) { QTest::mouseClick(&widget, Qt::LeftButton); }

    ComposerField& field() { return composer->messageComposer()->field(); }
    QString text() { return composer->messageComposer()->text(); }
    /// The button with this object name.
    BusyButton& button(const QString& name) { return *composer->findChild<BusyButton*>(name); }
    /// The rows on show as "lead", from top to bottom; a row of which nothing is seen is left out.
    QStringList rows();
    SuggestionRow& row(int index);
    /// The previews that went out as typing frames.
    QStringList previews();
    /// Member @p key of the JSON body of message request @p index; undefined without it.
    QJsonValue sent(const QString& key, std::size_t index = 0);
    /// Lets the next message be accepted.
    void acceptMessage(const QString& id = u"m1"_s);

    std::unique_ptr<QWidget> window;
    QPushButton* elsewhere = nullptr;
    ConversationComposer* composer = nullptr; ///< belongs to the window
};

CannedResponse makeCanned(const QString& shortcut, const QString& body);

} // namespace orvia::test
