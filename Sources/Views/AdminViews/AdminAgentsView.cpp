#include "Views/AdminViews/AdminAgentsView.h"

#include "Session/Session.h"
#include "Views/AdminViews/AgentFormSheet.h"

namespace orvia {

namespace {

constexpr int leastRowHeight = 52;

} // namespace

AdminAgentsView::AdminAgentsView(Session& session, QWidget* parent)
    : AdminRecordsPage<Agent>(tr("Agents"), tr("New agent"), session, parent, [](const Agent& agent) {
        AdminRow row;
        row.title = agent.name;
        row.detail = agent.email;
        if (agent.role == AgentRole::admin)
            row.badge = tr("admin");
        return row;
    })
{
    setList(new AdminListView(title(), model(), leastRowHeight, false, 0, this));
}

std::optional<Agent> AdminAgentsView::editingAgent() const
{
    const auto* sheet = static_cast<const AgentFormSheet*>(editSheet());
    return sheet ? sheet->mode().agent : std::nullopt;
}

QCoro::Task<std::vector<Agent>> AdminAgentsView::fetch() const
{
    return session()->client().adminAgents();
}

FormSheet* AdminAgentsView::makeCreateSheet()
{
    return new AgentFormSheet(AgentFormSheet::Mode::create(), *session(), this, reloading());
}

FormSheet* AdminAgentsView::makeEditSheet(int row)
{
    return new AgentFormSheet(AgentFormSheet::Mode::edit(model().record(row)), *session(), this, reloading());
}

} // namespace orvia
