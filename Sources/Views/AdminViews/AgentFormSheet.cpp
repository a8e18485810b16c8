#include "Views/AdminViews/AgentFormSheet.h"

#include "Session/Session.h"
#include "Views/Widgets/FormCard.h"
#include "Views/Widgets/Picker.h"
#include "Views/Widgets/Switch.h"
#include "Views/Widgets/TextField.h"

namespace orvia {

namespace {

/// Leaves the longer label of an existing agent's password its room.
constexpr int narrowFieldWidth = 196;

} // namespace

AgentFormSheet::AgentFormSheet(Mode mode, Session& session, QWidget* host, Done onDone)
    : FormSheet(mode.agent ? tr("Edit Agent") : tr("New Agent"), mode.agent ? tr("Save") : tr("Create"),
                session, host, std::move(onDone))
    , m_mode(std::move(mode))
{
    if (m_mode.agent) {
        m_selectedProductIds = m_mode.agent->productIds.value_or(QStringList());
        m_selectedProductIds.removeDuplicates();
    }
    buildIdentity();
    buildProducts();
    connect(confirmButton(), &QAbstractButton::clicked, this, &AgentFormSheet::save);
    refreshConfirm();
}

void AgentFormSheet::buildIdentity()
{
    FormSection* section = addSection();
    if (m_mode.agent) {
        section->addRow(new FormRow(tr("Name"), m_mode.agent->name));
        section->addRow(new FormRow(tr("Email"), m_mode.agent->email));
        m_password = addSecureField(section, tr("New password (optional)"));
        m_password->setFixedWidth(narrowFieldWidth);
    } else {
        m_name = addField(section, tr("Name"));
        m_email = addField(section, tr("Email"));
        m_password = addSecureField(section, tr("Password"));
    }
    m_role = new Picker(tr("Role"));
    m_role->addItem(tr("Agent"), static_cast<int>(AgentRole::agent));
    m_role->addItem(tr("Admin"), static_cast<int>(AgentRole::admin));
    const AgentRole role = m_mode.agent ? m_mode.agent->role : AgentRole::agent;
    m_role->setCurrentIndex(m_role->findData(static_cast<int>(role)));
    section->addRow(new FormRow(tr("Role"), m_role));
}

void AgentFormSheet::buildProducts()
{
    if (session().products().empty())
        return;
    FormSection* section = addSection(tr("Products"));
    for (const Product& product : session().products()) {
        auto* toggle = new Switch(product.name);
        toggle->setChecked(m_selectedProductIds.contains(product.id));
        connect(toggle, &QAbstractButton::toggled, this,
                [this, id = product.id](bool on) { selectProduct(id, on); });
        section->addRow(new FormRow(product.name, toggle));
    }
}

void AgentFormSheet::selectProduct(const QString& id, bool selected)
{
    m_selectedProductIds.removeAll(id);
    if (selected)
        m_selectedProductIds.append(id);
}

AgentRole AgentFormSheet::role() const
{
    return static_cast<AgentRole>(m_role->currentData().toInt());
}

bool AgentFormSheet::isValid() const
{
    return m_mode.agent
           || !(m_name->text().isEmpty() || m_email->text().isEmpty() || m_password->text().isEmpty());
}

void AgentFormSheet::save()
{
    submit([this](const APIClient& client) {
        if (!m_mode.agent)
            return client.adminCreateAgent(m_name->text(), m_email->text(), m_password->text(), role(),
                                           m_selectedProductIds);
        std::optional<QString> password;
        if (!m_password->text().isEmpty())
            password = m_password->text();
        return client.adminUpdateAgent(m_mode.agent->id, m_selectedProductIds, role(), password);
    });
}

} // namespace orvia
