#pragma once

#include "Theme/Theme.h"

#include <QWidget>

#include <optional>

namespace orvia {

class ElidedLabel;
class IconButton;

/// The column's title: the visitor's name over the e-mail address, and the two buttons.
class ConversationTitleBand : public QWidget {
    Q_OBJECT

public:
    explicit ConversationTitleBand(QWidget* parent = nullptr);

    void setTitle(const QString& title, const QString& subtitle);
    IconButton* visitorDetailsButton() const { return m_visitorDetails; }
    IconButton* moreActionsButton() const { return m_moreActions; }

private:
    ElidedLabel* m_title;
    ElidedLabel* m_subtitle;
    IconButton* m_visitorDetails;
    IconButton* m_moreActions;
};

/// A symbol that tells something on its own, named for assistive tools, or that stands beside its text.
class HeaderSymbol : public QWidget {
    Q_OBJECT

public:
    HeaderSymbol(const QString& iconName, int size, ColorRole color, QWidget* parent = nullptr);

    void setIconName(const QString& iconName);
    const QString& iconName() const { return m_iconName; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_iconName;
    int m_size;
    ColorRole m_color;
};

/// Who has the conversation, until when it is snoozed, and whether it is muted.
class ConversationHeaderBar : public QWidget {
    Q_OBJECT

public:
    struct Contents {
        bool isAssigned = false;
        QString assignment;
        std::optional<QString> snoozed; ///< the text, while the conversation is snoozed
        bool isMuted = false;
    };

    explicit ConversationHeaderBar(QWidget* parent = nullptr);

    void setContents(const Contents& contents);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    HeaderSymbol* m_person;
    ElidedLabel* m_assignment;
    QWidget* m_snoozed;
    ElidedLabel* m_snoozedText;
    HeaderSymbol* m_muted;
};

/// Which teammates are looking at the conversation as well.
class ConversationPresenceLine : public QWidget {
    Q_OBJECT

public:
    explicit ConversationPresenceLine(QWidget* parent = nullptr);

    /// Shows the line, or hides without a text.
    void setText(const std::optional<QString>& text);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    ElidedLabel* m_text;
};

} // namespace orvia
