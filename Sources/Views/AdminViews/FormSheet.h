#pragma once

#include "Session/Session.h"
#include "Views/Widgets/FocusReturn.h"
#include "Views/Widgets/Sheet.h"

#include <functional>

class QVBoxLayout;

namespace orvia {

class FormSection;
class TextField;

/// A form over an administration list that sends one request and closes when that succeeded. A failure shows
/// in the session's banner and leaves the form open with its input.
class FormSheet : public Sheet {
    Q_OBJECT

public:
    /// Runs after a successful request, before the sheet closes; the lists reload in it. It must hold what it
    /// needs weakly.
    using Done = std::function<QCoro::Task<void>()>;

    /// Whether the input may be sent.
    virtual bool isValid() const = 0;
    /// Whether a request is under way whose result has not been handled yet.
    bool isWorking() const { return m_isWorking; }

protected:
    FormSheet(const QString& title, const QString& confirmLabel, Session& session, QWidget* host,
              Done onDone);

    using Request = std::function<QCoro::Task<void>(const APIClient& client)>;
    /// Sends the form, unless it is invalid or a request is under way. @p request must not keep @p client.
    void submit(const Request& request);
    /// Brings the confirming button up to date; to be called whenever the input changes.
    void refreshConfirm();

    FormSection* addSection(const QString& heading = {});
    /// Adds a row with a text field that is named by @p label and keeps a text of any length.
    TextField* addField(FormSection* section, const QString& label, const QString& placeholder = {});
    TextField* addSecureField(FormSection* section, const QString& label);
    Session& session() const { return *m_session; }

private:
    static QCoro::Task<void> finish(QPointer<FormSheet> sheet, QPointer<Session> session, Done onDone,
                                    QCoro::Task<void> request);
    void addFieldRow(FormSection* section, const QString& label, TextField* field);
    void setWorking(bool working);

    QPointer<Session> m_session;
    Done m_onDone;
    QVBoxLayout* m_sections;
    FocusReturn m_confirmFocus;
    bool m_isWorking = false;
};

} // namespace orvia
