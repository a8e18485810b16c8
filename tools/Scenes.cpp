#include "Scenes.h"

#include "Session/Session.h"

#include <QAbstractButton>
#include <QPlainTextEdit>
#include <QTest>

namespace orvia {

using namespace Qt::StringLiterals;

Scene::Scene(QString name, QWidget& window, Session& session)
    : m_name(std::move(name))
    , m_window(window)
    , m_session(session)
{
}

QStringList Scene::names()
{
    return {u"main"_s,      u"panel"_s,
            u"mention"_s,   u"canned"_s,
            u"search"_s,    u"nothing"_s,
            u"empty"_s,     u"closed"_s,
            u"live"_s,      u"menu"_s,
            u"settings"_s,  u"agents"_s,
            u"products"_s,  u"canned-responses"_s,
            u"new-agent"_s, u"banner"_s};
}

bool Scene::advance()
{
    if (m_name == "panel"_L1)
        return m_session.setShowVisitorPanel(true), true;
    if (m_name == "mention"_L1)
        return compose(u"Can you put one lid aside for 20418? @an"_s, true);
    if (m_name == "canned"_L1)
        return compose(u"/"_s, false);
    if (m_name == "search"_L1)
        return search(u"lid"_s);
    if (m_name == "nothing"_L1)
        return search(u"zzzz"_s);
    if (m_name == "empty"_L1) {
        m_session.setStatusFilter(ConversationStatus::closed);
        m_session.setQueue(InboxQueue::unassigned);
        m_session.setProductFilter(u"none"_s);
        m_session.setSelectedConversationId(std::nullopt);
        return true;
    }
    if (m_name == "closed"_L1)
        return m_session.setStatusFilter(ConversationStatus::closed), true;
    if (m_name == "live"_L1)
        return showLiveMarks();
    if (m_name == "menu"_L1)
        return click(u"More actions"_s);
    if (m_name == "settings"_L1)
        return click(u"Settings"_s);
    if (m_name == "agents"_L1)
        return openAdministration(u"Agents"_s);
    if (m_name == "products"_L1)
        return openAdministration(u"Products"_s);
    if (m_name == "canned-responses"_L1)
        return openAdministration(u"Canned Responses"_s);
    if (m_name == "new-agent"_L1) {
        if (m_step < 2)
            return openAdministration(u"Agents"_s), false;
        return click(u"New agent"_s);
    }
    if (m_name == "banner"_L1)
        m_session.showBanner(u"Network error: Connection refused"_s);
    return true;
}

bool Scene::compose(const QString& text, bool asNote)
{
    auto* const field = m_window.findChild<QPlainTextEdit*>(u"composerField"_s);
    auto* const noteMode = m_window.findChild<QAbstractButton*>(u"noteModeButton"_s);
    if (!field || !noteMode)
        return false;
    if (asNote)
        noteMode->click();
    field->setFocus();
    QTest::keyClicks(field, text);
    return true;
}

bool Scene::search(const QString& text)
{
    m_session.setSearchText(text);
    return true;
}

bool Scene::click(const QString& name)
{
    const auto buttons = m_window.findChildren<QAbstractButton*>();
    for (QAbstractButton* button : buttons) {
        if (button->isVisible() && (button->accessibleName() == name || button->text() == name)) {
            // A menu runs an event loop of its own until it is closed.
            QMetaObject::invokeMethod(button, &QAbstractButton::click, Qt::QueuedConnection);
            return true;
        }
    }
    return false;
}

bool Scene::openAdministration(const QString& page)
{
    if (m_step == 0) {
        m_step += click(u"Settings"_s) ? 1 : 0;
        return false;
    }
    if (m_step == 1 && click(page))
        m_step = 2;
    return m_step == 2;
}

bool Scene::showLiveMarks()
{
    const QString id = m_session.selectedConversationId().value_or(QString());
    SocketEvent viewers;
    viewers.type = u"viewers"_s;
    viewers.conversationId = id;
    viewers.agents = std::vector<ViewerAgent>{{u"dana"_s, u"Dana Whitfield"_s}};
    m_session.handle(viewers);
    SocketEvent typing;
    typing.type = u"typing"_s;
    typing.conversationId = id;
    typing.from = u"visitor"_s;
    typing.preview = u"Because I still have the first vers"_s;
    m_session.handle(typing);
    typing.from = u"agent"_s;
    typing.agentId = u"dana"_s;
    typing.agentName = u"Dana Whitfield"_s;
    typing.preview = u"The first version takes the 74 mm"_s;
    m_session.handle(typing);
    return true;
}

} // namespace orvia
