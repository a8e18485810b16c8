#include "Views/VisitorPanel/PanelText.h"

#include "Views/VisitorPanel/PanelMetrics.h"

namespace orvia {

namespace {

constexpr qsizetype longestLine = 500;
constexpr qsizetype longestToolTip = 2000;

QString bounded(const QString& text, qsizetype limit)
{
    if (text.size() <= limit)
        return text;
    const qsizetype end = text.at(limit - 1).isHighSurrogate() ? limit - 1 : limit;
    return text.first(end) + QChar(0x2026);
}

} // namespace

QString panelLine(const QString& text)
{
    return bounded(text, longestLine).simplified();
}

QString panelToolTip(const QString& text)
{
    return bounded(text, longestToolTip);
}

PanelLine::PanelLine(TextRole role, ColorRole color, QWidget* parent)
    : ElidedLabel(QString(), role, color, parent)
{
}

void PanelLine::setLine(const QString& text)
{
    if (text != m_text) {
        m_text = text;
        setText(panelLine(text));
        setAccessibleName(text);
        setToolTip(QString());
        if (text.size() > longestLine)
            setToolTip(panelToolTip(text));
    }
    setVisible(!text.isEmpty());
}

QSize PanelLine::sizeHint() const
{
    return {ElidedLabel::sizeHint().width(),
            qMax(ElidedLabel::sizeHint().height(), PanelMetrics::lineHeight)};
}

QSize PanelLine::minimumSizeHint() const
{
    return {ElidedLabel::minimumSizeHint().width(), sizeHint().height()};
}

} // namespace orvia
