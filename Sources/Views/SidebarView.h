#pragma once

#include <QWidget>

namespace orvia {

class IconButton;
class Session;
class SidebarList;
class Switch;

/// The filters of the inbox - product, queue, status, snoozed -, the way to the settings, and the state of
/// the live channel.
class SidebarView : public QWidget {
    Q_OBJECT

public:
    explicit SidebarView(Session& session, QWidget* parent = nullptr);

Q_SIGNALS:
    void settingsRequested();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QWidget* buildTitle();
    QWidget* buildFilters();
    QWidget* buildSnoozedRow();
    void connectFilters();
    void refreshProducts();
    void selectProduct();
    void selectQueue();
    void selectStatus();

    Session& m_session;
    SidebarList* m_products;
    SidebarList* m_queue;
    SidebarList* m_status;
    Switch* m_showSnoozed;
};

} // namespace orvia
