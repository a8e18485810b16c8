#include "PanelFixture.h"

#include <QAccessible>

namespace orvia::test {

using namespace std::chrono_literals;

PanelFixture::PanelFixture()
{
    conversation = makeConversation(u"c1"_s);
    conversation.visitor.name = u"Helen Brandt"_s;
    conversation.visitor.email = u"helen@example.de"_s;
    conversation.createdAt = clock - 5h;
    conversation.visitor.meta.emplace();
    surroundings.openURL = [this](const QUrl& url) { opened.push_back(url); };
    surroundings.now = [this] { return clock; };
    surroundings.copiedShown = 30ms;
    surroundings.leastRefresh = 10ms;
    makeSession();
}

PanelFixture::~PanelFixture()
{
    panel.reset();
}

void PanelFixture::tell(const Conversation& told)
{
    SocketEvent event;
    event.type = u"conversation"_s;
    event.conversation = told;
    session->handle(event);
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
}

void PanelFixture::scriptHistory(std::vector<Conversation> conversations)
{
    service.always("GET", "/v1/agent/visitors/conversations",
                   answerOf(ConversationsResponse{{std::move(conversations)}}));
}

VisitorPanel& PanelFixture::makePanel()
{
    panel = std::make_unique<VisitorPanel>(*session, conversation.id, surroundings);
    return *panel;
}

VisitorPanel& PanelFixture::showPanel()
{
    makePanel();
    panel->resize(panel->width(), 700);
    panel->show();
    panel->activateWindow();
    QCoreApplication::processEvents();
    return *panel;
}

QStringList PanelFixture::sections() const
{
    QStringList titles;
    for (const PanelSection* section : all<PanelSection>())
        titles.append(section->accessibleName());
    return titles;
}

QStringList PanelFixture::names() const
{
    QStringList found;
    for (QWidget* widget : all<QWidget>()) {
        const bool speaks = qobject_cast<QLabel*>(widget) || qobject_cast<QPushButton*>(widget)
                            || qobject_cast<QLineEdit*>(widget);
        QAccessibleInterface* interface = speaks ? QAccessible::queryAccessibleInterface(widget) : nullptr;
        if (interface)
            found.append(interface->text(QAccessible::Name));
    }
    return found;
}

QStringList PanelFixture::journey() const
{
    QStringList rows;
    for (const JourneyRow* row : all<JourneyRow>())
        rows.append(row->accessibleName());
    return rows;
}

QScrollArea& PanelFixture::area() const
{
    return *panel->findChild<QScrollArea*>();
}

VisitorPage makePage(const QString& title, Instant now, int minutes)
{
    return {u"https://shop.example/"_s + title, title, now - std::chrono::minutes(minutes)};
}

} // namespace orvia::test
