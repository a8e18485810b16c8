#include "Views/SettingsView.h"

#include "Session/Session.h"
#include "Theme/Theme.h"
#include "Views/AdminViews/AdminViews.h"
#include "Views/Widgets/FormCard.h"
#include "Views/Widgets/Picker.h"
#include "Views/Widgets/Sheet.h"

#include <QVBoxLayout>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

/// The host of the service, or the whole origin where it has none.
QString serverText(const QUrl& origin)
{
    return origin.host().isEmpty() ? origin.toString() : origin.host();
}

} // namespace

Sheet* SettingsView::present(Session& session, QWidget* host)
{
    auto* sheet = new Sheet(tr("Settings"), host, Sheet::Kind::settings);
    const Button* done = sheet->setConfirmButton(tr("Done"));
    connect(done, &QAbstractButton::clicked, sheet, &Sheet::dismiss);
    sheet->setBody(new SettingsView(session, sheet));
    sheet->open();
    return sheet;
}

SettingsView::SettingsView(Session& session, Sheet* sheet)
    : m_session(session)
    , m_sheet(sheet)
    , m_notifications(new FormSection(tr("Notifications")))
    , m_notifyMode(new Picker(tr("Notify me about")))
    , m_account(new FormSection(tr("Account")))
    , m_name(new FormRow(tr("Name"), QString()))
    , m_email(new FormRow(tr("Email"), QString()))
    , m_role(new FormRow(tr("Role"), QString()))
    , m_admin(new FormSection(tr("Admin")))
{
    auto* sections = new QVBoxLayout(this);
    sections->setContentsMargins({});
    sections->setSpacing(Spacing::large);
    buildNotifications();
    buildAccount();
    buildAdmin();
    for (FormSection* section : {m_notifications, m_account, m_admin})
        sections->addWidget(section);
    refresh();
    connect(&session, &Session::agentChanged, this, &SettingsView::refresh);
}

void SettingsView::buildNotifications()
{
    const std::pair<NotifyMode, QString> rows[] = {{NotifyMode::all, tr("Everything")},
                                                   {NotifyMode::mine, tr("Mine and unassigned")},
                                                   {NotifyMode::mentions, tr("Mentions only")}};
    for (const auto& [mode, label] : rows)
        m_notifyMode->addItem(label, static_cast<int>(mode));
    connect(m_notifyMode, &QComboBox::activated, this, &SettingsView::chooseNotifyMode);
    m_notifications->addRow(new FormRow(tr("Notify me about"), m_notifyMode));
}

void SettingsView::buildAccount()
{
    m_account->addRow(m_name);
    m_account->addRow(m_email);
    m_account->addRow(m_role);
    m_account->addRow(new FormRow(tr("Server"), serverText(m_session.baseURL())));
    auto* signOutRow = new FormActionRow(tr("Sign Out"), ColorRole::danger);
    connect(signOutRow, &QAbstractButton::clicked, this, &SettingsView::signOut);
    m_account->addRow(signOutRow);
}

template <class AdminView>
void SettingsView::addAdminLink(const QString& iconName, const QString& label)
{
    auto* link = new FormActionRow(iconName, label);
    connect(link, &QAbstractButton::clicked, this, [this] {
        auto* page = new AdminView(m_session, m_sheet);
        m_sheet->pushPage(page->title(), page, page->trailingButton());
    });
    m_admin->addRow(link);
}

void SettingsView::buildAdmin()
{
    addAdminLink<AdminProductsView>(u"box"_s, tr("Products"));
    addAdminLink<AdminAgentsView>(u"people"_s, tr("Agents"));
    addAdminLink<AdminCannedView>(u"canned"_s, tr("Canned Responses"));
}

void SettingsView::refresh()
{
    const std::optional<Agent>& agent = m_session.agent();
    m_notifications->setVisible(agent.has_value());
    m_account->setVisible(agent.has_value());
    m_admin->setVisible(m_session.isAdmin());
    if (!agent)
        return;
    const NotifyMode mode = agent->notifyMode.value_or(NotifyMode::all);
    m_notifyMode->setCurrentIndex(m_notifyMode->findData(static_cast<int>(mode)));
    const qsizetype muted = agent->mutedConversationIds ? agent->mutedConversationIds->size() : 0;
    m_notifications->setFooter(muted == 0   ? QString()
                               : muted == 1 ? tr("1 muted conversation")
                                            : tr("%1 muted conversations").arg(muted));
    m_name->setValue(agent->name);
    m_email->setValue(agent->email);
    m_role->setValue(m_session.isAdmin() ? u"admin"_s : u"agent"_s);
}

void SettingsView::chooseNotifyMode(int row)
{
    const auto mode = static_cast<NotifyMode>(m_notifyMode->itemData(row).toInt());
    m_session.setNotifyMode(mode);
    // The picker shows what the service keeps, and goes along when that changes.
    refresh();
}

void SettingsView::signOut()
{
    m_session.logout();
    m_sheet->dismiss();
}

} // namespace orvia
