#include "Views/VisitorPanel/PanelText.h"

#include "Views/VisitorPanel/PanelMetrics.h"

namespace orvia {

PanelLine::PanelLine(TextRole role, ColorRole color, QWidget* parent)
    : ElidedLabel(QString(), role, color, parent)
{
}

void PanelLine::setLine(const QString& text)
{
    if (text != m_text) {
        m_text = text;
        setText(shownLine(text));
        setAccessibleName(text);
        setToolTip(QString());
        if (text.size() > longestShownLine)
            setToolTip(shownToolTip(text));
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
