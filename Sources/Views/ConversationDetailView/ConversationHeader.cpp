#include "Views/ConversationDetailView/ConversationHeader.h"

#include "Views/Widgets/AccessibleRole.h"
#include "Views/Widgets/Button.h"
#include "Views/Widgets/Label.h"
#include "Views/Widgets/PaintShapes.h"

#include <QHBoxLayout>
#include <QPainter>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

constexpr int titleLine = 18;
constexpr int subtitleLine = 15;
constexpr int headerIcon = 15;
constexpr int presenceIcon = 14;
constexpr int presenceHeight = 26;
constexpr int headerBottom = 12;

ElidedLabel* makeLabel(TextRole role, ColorRole color, QWidget* parent)
{
    auto* label = new ElidedLabel({}, role, color, parent);
    label->setAlignment(Qt::AlignLeading | Qt::AlignVCenter);
    return label;
}

} // namespace

ConversationTitleBand::ConversationTitleBand(QWidget* parent)
    : QWidget(parent)
    , m_title(makeLabel(TextRole::heading, ColorRole::textPrimary, this))
    , m_subtitle(makeLabel(TextRole::footnote, ColorRole::textSecondary, this))
    , m_visitorDetails(new IconButton(u"info"_s, tr("Visitor details"), this))
    , m_moreActions(new IconButton(u"more"_s, tr("More actions"), this))
{
    setFixedHeight(Metric::titleBand);
    m_title->setMinimumHeight(titleLine);
    m_subtitle->setMinimumHeight(subtitleLine);
    m_visitorDetails->setCheckable(true);

    auto* texts = new QVBoxLayout;
    texts->setSpacing(0);
    texts->addStretch();
    texts->addWidget(m_title);
    texts->addWidget(m_subtitle);
    texts->addStretch();
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(Spacing::large, 0, Spacing::small, 0);
    row->setSpacing(Spacing::xSmall);
    row->addLayout(texts, 1);
    row->addWidget(m_visitorDetails);
    row->addWidget(m_moreActions);
}

void ConversationTitleBand::setTitle(const QString& title, const QString& subtitle)
{
    m_title->setText(title);
    m_subtitle->setText(subtitle);
    m_subtitle->setVisible(!subtitle.isEmpty());
}

HeaderSymbol::HeaderSymbol(const QString& iconName, int size, ColorRole color, QWidget* parent)
    : QWidget(parent)
    , m_iconName(iconName)
    , m_size(size)
    , m_color(color)
{
    setFixedSize(size, size);
}

void HeaderSymbol::setIconName(const QString& iconName)
{
    m_iconName = iconName;
    update();
}

void HeaderSymbol::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    Theme::drawIcon(painter, rect(), m_iconName, m_size, m_color);
}

ConversationHeaderBar::ConversationHeaderBar(QWidget* parent)
    : QWidget(parent)
    , m_person(new HeaderSymbol(u"person-add"_s, headerIcon, ColorRole::textSecondary, this))
    , m_assignment(makeLabel(TextRole::callout, ColorRole::textSecondary, this))
    , m_snoozed(new QWidget(this))
    , m_snoozedText(makeLabel(TextRole::callout, ColorRole::textSecondary, m_snoozed))
    , m_muted(new HeaderSymbol(u"bell-off"_s, headerIcon, ColorRole::textSecondary, this))
{
    setFixedHeight(Metric::secondBand);
    markAsStaticText(m_muted);
    m_muted->setAccessibleName(tr("Muted"));
    m_muted->setToolTip(tr("Muted"));
    // The assignment gives way first.
    m_snoozedText->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);

    auto* snoozed = new QHBoxLayout(m_snoozed);
    snoozed->setContentsMargins(0, 0, 0, 0);
    snoozed->setSpacing(Spacing::iconGap);
    snoozed->addWidget(new HeaderSymbol(u"snooze"_s, headerIcon, ColorRole::textSecondary, m_snoozed));
    snoozed->addWidget(m_snoozedText);
    auto* assignment = new QHBoxLayout;
    assignment->setSpacing(Spacing::iconGap);
    assignment->addWidget(m_person);
    assignment->addWidget(m_assignment);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(Spacing::large, 0, Spacing::large, headerBottom + 1);
    row->setSpacing(Spacing::medium);
    row->addLayout(assignment);
    row->addWidget(m_snoozed);
    row->addWidget(m_muted);
    row->addStretch(1);
}

void ConversationHeaderBar::setContents(const Contents& contents)
{
    m_person->setIconName(contents.isAssigned ? u"person-fill"_s : u"person-add"_s);
    m_assignment->setText(contents.assignment);
    m_snoozedText->setText(contents.snoozed.value_or(QString()));
    m_snoozed->setVisible(contents.snoozed.has_value());
    m_muted->setVisible(contents.isMuted);
}

void ConversationHeaderBar::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    PaintShapes::hairLine(painter, 0, width(), height() - 1);
}

ConversationPresenceLine::ConversationPresenceLine(QWidget* parent)
    : QWidget(parent)
    , m_text(makeLabel(TextRole::caption, ColorRole::textSecondary, this))
{
    setFixedHeight(presenceHeight);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(Spacing::large, 0, Spacing::large, 0);
    row->setSpacing(Spacing::iconGap);
    row->addWidget(new HeaderSymbol(u"eye"_s, presenceIcon, ColorRole::textSecondary, this));
    row->addWidget(m_text, 1);
    hide();
}

void ConversationPresenceLine::setText(const std::optional<QString>& text)
{
    m_text->setText(text.value_or(QString()));
    setVisible(text.has_value());
}

void ConversationPresenceLine::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), Theme::color(ColorRole::strip));
    PaintShapes::hairLine(painter, 0, width(), height() - 1);
}

} // namespace orvia
