#include "Views/VisitorPanel/PanelSection.h"

#include "Views/VisitorPanel/PanelMetrics.h"
#include "Views/Widgets/Label.h"

#include <QVBoxLayout>

namespace orvia {

PanelSection::PanelSection(const QString& title, QWidget* parent)
    : QWidget(parent)
    , m_contents(new QVBoxLayout)
{
    setAccessibleName(title);
    // The role's font shows the title in capitals; its text stays as it is.
    auto* heading = new Label(title, TextRole::microHeading, ColorRole::textSecondary, this);
    const auto fitHeading = [heading] {
        heading->setFixedHeight(qMax(PanelMetrics::sectionTitleHeight, heading->fontMetrics().height()));
    };
    connect(&Theme::shared(), &Theme::changed, heading, fitHeading);
    fitHeading();
    m_contents->setSpacing(0);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, PanelMetrics::sectionGap, 0, 0);
    layout->setSpacing(Spacing::xSmall);
    layout->addWidget(heading);
    layout->addLayout(m_contents);
}

} // namespace orvia
