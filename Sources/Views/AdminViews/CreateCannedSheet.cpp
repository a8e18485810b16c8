#include "Views/AdminViews/CreateCannedSheet.h"

#include "Session/Session.h"
#include "Views/Widgets/FormCard.h"
#include "Views/Widgets/Picker.h"
#include "Views/Widgets/TextField.h"

namespace orvia {

CreateCannedSheet::CreateCannedSheet(Session& session, QWidget* host, Done onDone)
    : FormSheet(tr("New Canned Response"), tr("Create"), session, host, std::move(onDone))
{
    FormSection* section = addSection();
    m_shortcut = addField(section, tr("Shortcut"));
    m_bodyText = addField(section, tr("Body"));
    m_product = new Picker(tr("Product"));
    m_product->addItem(tr("All products"));
    for (const Product& product : session.products())
        m_product->addItem(product.name, product.id);
    section->addRow(new FormRow(tr("Product"), m_product));
    connect(confirmButton(), &QAbstractButton::clicked, this, &CreateCannedSheet::create);
    refreshConfirm();
}

std::optional<QString> CreateCannedSheet::productId() const
{
    if (m_product->currentIndex() <= 0)
        return std::nullopt;
    return m_product->currentData().toString();
}

bool CreateCannedSheet::isValid() const
{
    return !m_shortcut->text().isEmpty() && !m_bodyText->text().isEmpty();
}

void CreateCannedSheet::create()
{
    submit([this](const APIClient& client) {
        return client.adminCreateCanned(m_shortcut->text(), m_bodyText->text(), productId());
    });
}

} // namespace orvia
