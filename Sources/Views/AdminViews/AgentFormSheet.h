#pragma once

#include "Models/Agent.h"
#include "Views/AdminViews/FormSheet.h"

namespace orvia {

class Picker;

/// Creates an agent, or edits one's role, products and password.
class AgentFormSheet : public FormSheet {
    Q_OBJECT

public:
    struct Mode {
        std::optional<Agent> agent; ///< the one to edit; absent creates one

        static Mode create() { return {}; }
        static Mode edit(Agent agent) { return {std::move(agent)}; }
    };

    AgentFormSheet(Mode mode, Session& session, QWidget* host, Done onDone);

    const Mode& mode() const { return m_mode; }
    /// The products that the agent shall serve, each once, those that the session does not know included.
    const QStringList& selectedProductIds() const { return m_selectedProductIds; }
    AgentRole role() const;

    /// A new agent needs name, e-mail and password; an existing one can always be saved.
    bool isValid() const override;
    void save();

private:
    void buildIdentity();
    void buildProducts();
    /// Puts a product's id into the selection or takes it out.
    void selectProduct(const QString& id, bool selected);

    Mode m_mode;
    TextField* m_name = nullptr;
    TextField* m_email = nullptr;
    TextField* m_password = nullptr;
    Picker* m_role = nullptr;
    QStringList m_selectedProductIds;
};

} // namespace orvia
