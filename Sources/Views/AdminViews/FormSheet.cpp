#include "Views/AdminViews/FormSheet.h"

#include "Session/Answers.h"
#include "Views/Widgets/Button.h"
#include "Views/Widgets/FormCard.h"
#include "Views/Widgets/TextField.h"

#include <QVBoxLayout>

#include <limits>

namespace orvia {

FormSheet::FormSheet(const QString& title, const QString& confirmLabel, Session& session, QWidget* host,
                     Done onDone)
    : Sheet(title, host)
    , m_session(&session)
    , m_onDone(std::move(onDone))
{
    auto* body = new QWidget;
    m_sections = new QVBoxLayout(body);
    m_sections->setContentsMargins({});
    m_sections->setSpacing(Spacing::large);
    setBody(body);
    setDismissButton(tr("Cancel"));
    setConfirmButton(confirmLabel);
}

FormSection* FormSheet::addSection(const QString& heading)
{
    auto* section = new FormSection(heading);
    m_sections->addWidget(section);
    return section;
}

TextField* FormSheet::addField(FormSection* section, const QString& label, const QString& placeholder)
{
    auto* field = new TextField(label);
    field->setPlaceholderText(placeholder);
    addFieldRow(section, label, field);
    return field;
}

TextField* FormSheet::addSecureField(FormSection* section, const QString& label)
{
    auto* field = new SecureField(label);
    field->setPlaceholderText({});
    addFieldRow(section, label, field);
    return field;
}

void FormSheet::addFieldRow(FormSection* section, const QString& label, TextField* field)
{
    // A line edit's usual limit would cut a longer text that the service sent.
    field->setMaxLength(std::numeric_limits<int>::max());
    section->addRow(new FormRow(label, field));
    connect(field, &QLineEdit::textChanged, this, &FormSheet::refreshConfirm);
}

void FormSheet::refreshConfirm()
{
    confirmButton()->setEnabled(!m_isWorking && isValid());
}

void FormSheet::setWorking(bool working)
{
    m_isWorking = working;
    confirmButton()->setBusy(working);
    m_confirmFocus.setEnabled(confirmButton(), !working && isValid());
}

void FormSheet::submit(const Request& request)
{
    if (m_isWorking || !isValid() || !m_session || !isOpen())
        return;
    setWorking(true);
    finish(this, m_session, m_onDone, request(m_session->client()));
}

QCoro::Task<void> FormSheet::finish(QPointer<FormSheet> sheet, QPointer<Session> session, Done onDone,
                                    QCoro::Task<void> request)
{
    const auto answer = co_await session->answerTo(std::move(request));
    if (!answer) {
        if (sheet)
            sheet->setWorking(false);
        co_return;
    }
    // Whatever became of the sheet: the list below shows what the service has now.
    if (onDone) {
        QCoro::Task<void> done = onDone();
        co_await done;
    }
    if (!sheet)
        co_return;
    sheet->dismiss();
    sheet->setWorking(false);
}

} // namespace orvia
