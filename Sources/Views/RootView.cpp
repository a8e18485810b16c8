#include "Views/RootView.h"

#include "Platform/ShownText.h"
#include "Session/Session.h"
#include "Theme/Theme.h"
#include "Views/BannerView.h"
#include "Views/LoginView.h"
#include "Views/MainSplitView.h"
#include "Views/Widgets/Sheet.h"

#include <QAccessibleWidget>
#include <QApplication>
#include <QHelpEvent>
#include <QMenu>
#include <QPainter>
#include <QTimer>
#include <QToolTip>
#include <QVBoxLayout>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

/// A window to assistive tools, which look for one to find what is below. A menu that is open in the window
/// is among its children, wherever it was opened; Qt would list it nowhere.
class WindowAccessible : public QAccessibleWidget {
public:
    explicit WindowAccessible(RootView* window)
        : QAccessibleWidget(window, QAccessible::Window)
    {
    }

    int childCount() const override
    {
        return QAccessibleWidget::childCount() + static_cast<int>(openMenus().size());
    }

    QAccessibleInterface* child(int index) const override
    {
        const int others = QAccessibleWidget::childCount();
        return index < others ? QAccessibleWidget::child(index)
                              : QAccessible::queryAccessibleInterface(openMenus().value(index - others));
    }

    int indexOfChild(const QAccessibleInterface* wanted) const override
    {
        const qsizetype menu = wanted ? openMenus().indexOf(qobject_cast<QWidget*>(wanted->object())) : -1;
        return menu < 0 ? QAccessibleWidget::indexOfChild(wanted)
                        : QAccessibleWidget::childCount() + static_cast<int>(menu);
    }

private:
    QWidgetList openMenus() const
    {
        QWidgetList menus = QApplication::topLevelWidgets();
        menus.removeIf([this](const QWidget* menu) {
            return !qobject_cast<const QMenu*>(menu) || !menu->isVisible() || !menu->parentWidget()
                   || menu->parentWidget()->window() != widget();
        });
        return menus;
    }
};

QAccessibleInterface* makeAccessible(const QString&, QObject* object)
{
    auto* window = qobject_cast<RootView*>(object);
    return window ? new WindowAccessible(window) : nullptr;
}

} // namespace

RootView::RootView(Session& session, QWidget* parent)
    : QWidget(parent)
    , m_session(session)
    , m_banner(new BannerView(this))
{
    static const bool installed = (QAccessible::installFactory(makeAccessible), true);
    Q_UNUSED(installed)
    setAttribute(Qt::WA_OpaquePaintEvent);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins({});
    followToken();
    connect(&session, &Session::tokenChanged, this, &RootView::followToken);
    connect(&session, &Session::bannerChanged, this, [this] { m_banner->present(m_session.banner()); });
    m_banner->present(session.banner());
}

void RootView::followToken()
{
    const bool signedIn = m_session.token().has_value();
    if (m_screen && signedIn == m_signedIn)
        return;
    m_signedIn = signedIn;
    while (Sheet* sheet = Sheet::topmost(this))
        sheet->dismiss();
    if (m_screen) {
        layout()->removeWidget(m_screen);
        m_screen->hide();
        m_screen->deleteLater();
    }
    // Whose conversation was open is not the next agent's business.
    setWindowTitle(tr("Orvia"));
    if (signedIn) {
        Theme::expectEveryScript();
        m_screen = new MainSplitView(m_session, this);
    } else {
        m_screen = new LoginView(m_session, this);
    }
    layout()->addWidget(m_screen);
    m_screen->show();
    Sheet::keepAbove(m_banner);
}

bool RootView::event(QEvent* event)
{
    // The banner lets the mouse through, so its tooltip is the window's business.
    if (event->type() == QEvent::ToolTip && m_banner->isVisible() && m_banner->isElided()) {
        const auto* help = static_cast<QHelpEvent*>(event);
        if (m_banner->panelInParent().contains(mapFromGlobal(help->globalPos()))) {
            QToolTip::showText(help->globalPos(), shownToolTip(m_banner->text()), this);
            return true;
        }
    }
    return QWidget::event(event);
}

void RootView::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (!std::exchange(m_appeared, true))
        m_session.bootstrap();
}

void RootView::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    m_banner->place();
}

void RootView::paintEvent(QPaintEvent*)
{
    if (!std::exchange(m_wasPainted, true))
        QTimer::singleShot(0, this, &RootView::painted);
    QPainter(this).fillRect(rect(), Theme::color(ColorRole::window));
}

} // namespace orvia
