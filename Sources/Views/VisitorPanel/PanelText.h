#pragma once

#include "Platform/ShownText.h"
#include "Views/Widgets/Label.h"

namespace orvia {

/// One line of the panel. What does not fit is elided; the accessible name is the whole text.
class PanelLine : public ElidedLabel {
    Q_OBJECT

public:
    explicit PanelLine(TextRole role = TextRole::callout, ColorRole color = ColorRole::textPrimary,
                       QWidget* parent = nullptr);

    /// Shows @p text, or hides when it is empty.
    void setLine(const QString& text);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

private:
    QString m_text;
};

} // namespace orvia
