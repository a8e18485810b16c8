#pragma once

#include <QPointer>
#include <QWidget>

#include <optional>

namespace orvia {

class Button;
class Label;
class SecureField;
class Session;
class Sheet;
class TextField;

/// The sign-in screen.
class LoginView : public QWidget {
    Q_OBJECT

public:
    explicit LoginView(Session& session, QWidget* parent = nullptr);

    bool isWorking() const { return m_isWorking; }

protected:
    void showEvent(QShowEvent* event) override;

private:
    void buildColumn();
    void submit();
    void finish(const std::optional<QString>& errorText);
    void updateButton();
    void setErrorText(const std::optional<QString>& text);
    void showSettings();

    Session& m_session;
    TextField* m_email;
    SecureField* m_password;
    Label* m_error;
    Button* m_signIn;
    Button* m_serverSettings;
    QPointer<Sheet> m_settings;
    bool m_isWorking = false;
};

} // namespace orvia
