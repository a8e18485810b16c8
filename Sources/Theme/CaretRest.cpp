#include "Theme/CaretRest.h"

#include <QEvent>
#include <QGuiApplication>
#include <QStyleHints>

namespace orvia {

CaretRest::CaretRest(std::chrono::milliseconds patience, QObject* parent)
    : QObject(parent)
    , m_flashTime(QGuiApplication::styleHints()->cursorFlashTime())
{
    m_patience.setSingleShot(true);
    m_patience.setInterval(patience);
    m_patience.callOnTimeout(this, &CaretRest::rest);
    m_patience.start();
    qGuiApp->installEventFilter(this);
}

CaretRest::~CaretRest()
{
    wake();
}

bool CaretRest::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::KeyPress:
    case QEvent::InputMethod:
    case QEvent::MouseButtonPress:
    case QEvent::WindowActivate:
        wake();
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

void CaretRest::rest()
{
    QGuiApplication::styleHints()->setCursorFlashTime(0);
}

void CaretRest::wake()
{
    if (!m_patience.isActive())
        QGuiApplication::styleHints()->setCursorFlashTime(m_flashTime);
    m_patience.start();
}

} // namespace orvia
