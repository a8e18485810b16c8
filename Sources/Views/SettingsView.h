#pragma once

#include <QWidget>

namespace orvia {

class FormRow;
class FormSection;
class Picker;
class Session;
class Sheet;

/// The settings: what to be notified about, the account, and for administrators the way to the administration
/// screens. Sections without a subject are not shown; before sign-in that is all of them.
class SettingsView : public QWidget {
    Q_OBJECT

public:
    /// Opens the settings as a sheet over @p host's window.
    static Sheet* present(Session& session, QWidget* host);

    SettingsView(Session& session, Sheet* sheet);

private:
    void buildNotifications();
    void buildAccount();
    void buildAdmin();
    void refresh();
    void chooseNotifyMode(int row);
    void signOut();
    template <class AdminView>
    void addAdminLink(const QString& iconName, const QString& label);

    Session& m_session;
    Sheet* m_sheet;
    FormSection* m_notifications;
    Picker* m_notifyMode;
    FormSection* m_account;
    FormRow* m_name;
    FormRow* m_email;
    FormRow* m_role;
    FormSection* m_admin;
};

} // namespace orvia
