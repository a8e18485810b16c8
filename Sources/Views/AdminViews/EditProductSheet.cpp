#include "Views/AdminViews/EditProductSheet.h"

#include "Views/AdminViews/AdminRules.h"
#include "Views/Widgets/Button.h"
#include "Views/Widgets/FormCard.h"
#include "Views/Widgets/Picker.h"
#include "Views/Widgets/Switch.h"
#include "Views/Widgets/TextField.h"

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

std::optional<QString> unlessEmpty(const QString& text)
{
    return text.isEmpty() ? std::nullopt : std::optional(text);
}

/// Shows a text from its beginning, whatever its length.
void fill(TextField* field, const QString& text)
{
    field->setText(text);
    field->setCursorPosition(0);
}

} // namespace

EditProductSheet::EditProductSheet(Product product, Session& session, QWidget* host, Done onDone)
    : FormSheet(tr("Edit Product"), tr("Save"), session, host, std::move(onDone))
    , m_product(std::move(product))
{
    build();
    populate();
    connect(m_positionPicker, &QComboBox::activated, this,
            [this](int row) { m_position = m_positionPicker->itemData(row).toString(); });
    connect(confirmButton(), &QAbstractButton::clicked, this, &EditProductSheet::save);
    refreshConfirm();
}

void EditProductSheet::build()
{
    m_name = addField(addSection(), tr("Name"));

    FormSection* widgetSection = addSection(tr("Widget"));
    m_widgetTitle = addField(widgetSection, tr("Header title"), tr("Chat"));
    m_accentHex = addField(widgetSection, tr("Accent color"), u"#c2410c"_s);
    m_positionPicker = new Picker(tr("Position"));
    m_positionPicker->addItem(tr("Right"), u"right"_s);
    m_positionPicker->addItem(tr("Left"), u"left"_s);
    widgetSection->addRow(new FormRow(tr("Position"), m_positionPicker));

    FormSection* greetingSection = addSection(tr("Greeting"));
    m_greetingEnabled = new Switch(tr("Enabled"));
    greetingSection->addRow(new FormRow(tr("Enabled"), m_greetingEnabled));
    m_greetingDelay = addField(greetingSection, tr("Delay (seconds)"));
    m_greetingText = addField(greetingSection, tr("Text"));
}

void EditProductSheet::populate()
{
    const WidgetConfig widget = m_product.widget.value_or(WidgetConfig());
    const WidgetGreeting greeting = widget.greeting.value_or(WidgetGreeting());
    m_name->setText(m_product.name);
    fill(m_widgetTitle, widget.title.value_or(QString()));
    fill(m_accentHex, widget.accentColor.value_or(QString()));
    m_position = widget.position.value_or(u"right"_s);
    m_positionPicker->setCurrentIndex(m_positionPicker->findData(m_position));
    m_greetingEnabled->setChecked(greeting.enabled.value_or(false));
    fill(m_greetingDelay, QString::number(greeting.delaySeconds.value_or(0)));
    fill(m_greetingText, greeting.text.value_or(QString()));
}

bool EditProductSheet::isValid() const
{
    return !m_name->text().isEmpty();
}

WidgetConfig EditProductSheet::widget() const
{
    WidgetGreeting greeting;
    greeting.enabled = m_greetingEnabled->isChecked();
    greeting.delaySeconds = AdminRules::greetingDelay(m_greetingDelay->text());
    greeting.text = unlessEmpty(m_greetingText->text());
    WidgetConfig widget;
    widget.title = unlessEmpty(m_widgetTitle->text());
    widget.accentColor = unlessEmpty(m_accentHex->text());
    widget.position = m_position;
    widget.greeting = greeting;
    return widget;
}

void EditProductSheet::save()
{
    submit([this](const APIClient& client) {
        return client.adminUpdateProduct(m_product.id, m_name->text(), widget());
    });
}

} // namespace orvia
