#include "Views/Widgets/EmptyState.h"

#include "Views/Widgets/AccessibleRole.h"
#include "Views/Widgets/Label.h"

#include <QVBoxLayout>

namespace orvia {

namespace {

constexpr int symbolSize = 48;

} // namespace

EmptyState::EmptyState(const QString& iconName, const QString& title, const QString& text, QWidget* parent)
    : QWidget(parent)
    , m_icon(new QLabel(this))
    , m_title(new Label({}, TextRole::emptyTitle))
    , m_text(new Label({}, TextRole::callout, ColorRole::textSecondary))
{
    markAsDecoration(m_icon);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(Spacing::large, Spacing::large, Spacing::large, Spacing::large);
    column->setSpacing(0);
    column->addStretch();
    m_icon->setAlignment(Qt::AlignCenter);
    column->addWidget(m_icon);
    column->addSpacing(Spacing::medium);
    for (Label* label : {m_title, m_text}) {
        label->setAlignment(Qt::AlignCenter);
        label->setWordWrap(true);
    }
    column->addWidget(m_title);
    column->addSpacing(Spacing::xSmall);
    column->addWidget(m_text);
    column->addStretch();
    setContents(iconName, title, text);
    connect(&Theme::shared(), &Theme::changed, this, &EmptyState::applyTheme);
}

void EmptyState::setContents(const QString& iconName, const QString& title, const QString& text)
{
    m_iconName = iconName;
    m_title->setText(title);
    m_text->setText(text);
    m_text->setVisible(!text.isEmpty());
    applyTheme();
}

void EmptyState::applyTheme()
{
    m_icon->setPixmap(Theme::icon(m_iconName, symbolSize, ColorRole::iconFaint, devicePixelRatioF()));
}

} // namespace orvia
