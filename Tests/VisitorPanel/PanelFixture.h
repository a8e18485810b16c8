#pragma once

#include "Session/SessionFixture.h"
#include "Views/VisitorPanel/PanelRowWidgets.h"
#include "Views/VisitorPanel/PanelSection.h"
#include "Views/VisitorPanel/VisitorPanel.h"

#include <QScrollArea>

namespace orvia::test {

/// A panel on a window of its own beside a session that hears of conversations by live events.
class PanelFixture : public SessionFixture {
protected:
    PanelFixture();
    ~PanelFixture() override;

    /// Makes the session know @p conversation, and lets the panel follow.
    void tell(const Conversation& conversation);
    /// Scripts the answer about the visitor's conversations.
    void scriptHistory(std::vector<Conversation> conversations);
    VisitorPanel& makePanel();
    VisitorPanel& showPanel();

    /// The visible widgets of one class whose accessible name is @p name.
    template <class Widget>
    std::vector<Widget*> named(const QString& name) const
    {
        std::vector<Widget*> found;
        for (Widget* widget : all<Widget>()) {
            if (widget->accessibleName() == name)
                found.push_back(widget);
        }
        return found;
    }
    /// The only visible widget of that class and name, or null.
    template <class Widget>
    Widget* only(const QString& name) const
    {
        const std::vector<Widget*> found = named<Widget>(name);
        return found.size() == 1 ? found.front() : nullptr;
    }
    /// All visible widgets of one class from top to bottom.
    template <class Widget>
    std::vector<Widget*> all() const
    {
        std::vector<Widget*> found;
        for (Widget* widget : panel->template findChildren<Widget*>()) {
            if (widget->isVisibleTo(panel.get()))
                found.push_back(widget);
        }
        std::sort(found.begin(), found.end(), [this](Widget* one, Widget* other) {
            return one->mapTo(panel.get(), QPoint()).y() < other->mapTo(panel.get(), QPoint()).y();
        });
        return found;
    }
    QStringList sections() const;
    /// The names that assistive tools read of the visible texts and controls, from top to bottom.
    QStringList names() const;
    QStringList journey() const;
    QScrollArea& area() const;

    Conversation conversation;
    VisitorPanel::Surroundings surroundings;
    std::vector<QUrl> opened;
    std::unique_ptr<VisitorPanel> panel;
};

/// A page visited @p minutes before @p now.
VisitorPage makePage(const QString& title, Instant now, int minutes);

} // namespace orvia::test
