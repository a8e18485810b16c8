#include "Views/LoginView.h"

#include "APIClient/APIError.h"
#include "Platform/ShownText.h"
#include "Session/Session.h"
#include "Theme/Theme.h"
#include "Views/SettingsView.h"
#include "Views/Widgets/AccessibleRole.h"
#include "Views/Widgets/Button.h"
#include "Views/Widgets/Label.h"
#include "Views/Widgets/Sheet.h"
#include "Views/Widgets/TextField.h"

#include <QAccessible>
#include <QCoro/QCoroTask>
#include <QVBoxLayout>

namespace orvia {

namespace {

constexpr int columnWidth = 320;
constexpr int symbolSize = 64;
// The icon has an empty margin, which is left out here.
constexpr int iconCanvas = 73;

/// Answers the text of the failure, or nothing after a success.
QCoro::Task<std::optional<QString>> attemptLogin(Session* session, QString email, QString password)
{
    try {
        co_await session->login(email, password);
    } catch (const APIError& error) {
        co_return error.message;
    }
    co_return std::nullopt;
}

} // namespace

LoginView::LoginView(Session& session, QWidget* parent)
    : QWidget(parent)
    , m_session(session)
    , m_email(new TextField(tr("Email"), this, TextField::Size::large))
    , m_password(new SecureField(tr("Password"), this, TextField::Size::large))
    , m_error(new Label({}, TextRole::footnote, ColorRole::danger, this))
    , m_signIn(new Button(tr("Sign In"), Button::Kind::primary, this))
    , m_serverSettings(new Button(tr("Server Settings"), Button::Kind::plain, this))
{
    m_email->setInputMethodHints(Qt::ImhEmailCharactersOnly | Qt::ImhNoAutoUppercase
                                 | Qt::ImhNoPredictiveText);
    m_error->setWordWrap(true);
    m_error->hide();
    m_signIn->setMinimumButtonHeight(Metric::largeFieldHeight);
    buildColumn();
    for (QLineEdit* field : {static_cast<QLineEdit*>(m_email), static_cast<QLineEdit*>(m_password)}) {
        connect(field, &QLineEdit::textChanged, this, &LoginView::updateButton);
        connect(field, &QLineEdit::returnPressed, this, &LoginView::submit);
    }
    connect(m_signIn, &QAbstractButton::clicked, this, &LoginView::submit);
    connect(m_serverSettings, &QAbstractButton::clicked, this, &LoginView::showSettings);
    updateButton();
}

void LoginView::buildColumn()
{
    auto* symbol = new QLabel(this);
    markAsDecoration(symbol);
    symbol->setPixmap(Theme::applicationPicture(iconCanvas, devicePixelRatioF()));
    symbol->setAlignment(Qt::AlignCenter);
    symbol->setFixedHeight(symbolSize);
    auto* title = new Label(tr("Orvia"), TextRole::title);
    title->setAlignment(Qt::AlignCenter);
    auto* subtitle =
        new Label(tr("Sign in with your agent account."), TextRole::callout, ColorRole::textSecondary);
    subtitle->setAlignment(Qt::AlignCenter);

    auto* middle = new QWidget(this);
    middle->setMaximumWidth(columnWidth);
    auto* items = new QVBoxLayout(middle);
    items->setContentsMargins({});
    items->setSpacing(Spacing::large);
    items->addWidget(symbol);
    items->addWidget(title);
    items->addWidget(subtitle);
    items->addWidget(m_email);
    items->addWidget(m_password);
    items->addWidget(m_error);
    m_signIn->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    items->addWidget(m_signIn);
    items->addWidget(m_serverSettings, 0, Qt::AlignHCenter);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(Spacing::large, Spacing::large, Spacing::large, Spacing::large);
    column->addStretch();
    auto* centred = new QHBoxLayout;
    centred->addStretch();
    centred->addWidget(middle, columnWidth);
    centred->addStretch();
    column->addLayout(centred);
    column->addStretch();
}

void LoginView::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (m_email->text().isEmpty())
        m_email->setFocus(Qt::OtherFocusReason);
}

void LoginView::updateButton()
{
    m_signIn->setEnabled(!m_isWorking && !m_email->text().isEmpty() && !m_password->text().isEmpty());
}

void LoginView::setErrorText(const std::optional<QString>& text)
{
    m_error->setText(shownLine(text.value_or(QString())));
    m_error->setVisible(text.has_value());
    if (!text)
        return;
    QAccessibleEvent alert(m_error, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

void LoginView::submit()
{
    if (m_isWorking || m_email->text().isEmpty() || m_password->text().isEmpty())
        return;
    m_isWorking = true;
    setErrorText(std::nullopt);
    // A disabled button loses the focus; the password is where one goes on after a refusal.
    if (m_signIn->hasFocus())
        m_password->setFocus(Qt::OtherFocusReason);
    m_signIn->setBusy(true);
    updateButton();
    QCoro::connect(attemptLogin(&m_session, m_email->text(), m_password->text()), this,
                   [this](const std::optional<QString>& errorText) { finish(errorText); });
}

void LoginView::finish(const std::optional<QString>& errorText)
{
    m_isWorking = false;
    m_signIn->setBusy(false);
    setErrorText(errorText);
    updateButton();
}

void LoginView::showSettings()
{
    if (!m_settings)
        m_settings = SettingsView::present(m_session, this);
}

} // namespace orvia
