#include "Views/AdminViews/CreateProductSheet.h"

#include "Views/Widgets/Button.h"
#include "Views/Widgets/TextField.h"

namespace orvia {

CreateProductSheet::CreateProductSheet(Session& session, QWidget* host, Done onDone)
    : FormSheet(tr("New Product"), tr("Create"), session, host, std::move(onDone))
{
    FormSection* section = addSection();
    m_name = addField(section, tr("Name"));
    m_slug = addField(section, tr("Slug"));
    connect(confirmButton(), &QAbstractButton::clicked, this, &CreateProductSheet::create);
    refreshConfirm();
}

bool CreateProductSheet::isValid() const
{
    return !m_name->text().isEmpty() && !m_slug->text().isEmpty();
}

void CreateProductSheet::create()
{
    submit([this](const APIClient& client) {
        return client.adminCreateProduct(m_name->text(), m_slug->text());
    });
}

} // namespace orvia
