#pragma once

#include "Theme/Theme.h"

#include <QWidget>

class QLabel;

namespace orvia {

class Label;

/// What an area shows while it has nothing to show: a large faint symbol, a title and, optionally, a text.
class EmptyState : public QWidget {
    Q_OBJECT

public:
    /// @p iconName names one of the large icons: "inbox-large".
    EmptyState(const QString& iconName, const QString& title, const QString& text = {},
               QWidget* parent = nullptr);

    void setContents(const QString& iconName, const QString& title, const QString& text = {});

private:
    void applyTheme();

    QString m_iconName;
    QLabel* m_icon;
    Label* m_title;
    Label* m_text;
};

} // namespace orvia
