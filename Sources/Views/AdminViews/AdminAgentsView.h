#pragma once

#include "Models/Agent.h"
#include "Views/AdminViews/AdminPage.h"

namespace orvia {

/// The team's agents: create one, or edit the one that is clicked.
class AdminAgentsView : public AdminRecordsPage<Agent> {
    Q_OBJECT

public:
    AdminAgentsView(Session& session, QWidget* parent);

    const std::vector<Agent>& agents() const { return records(); }
    /// The agent whose form is open.
    std::optional<Agent> editingAgent() const;

protected:
    QCoro::Task<std::vector<Agent>> fetch() const override;
    FormSheet* makeCreateSheet() override;
    FormSheet* makeEditSheet(int row) override;
};

} // namespace orvia
