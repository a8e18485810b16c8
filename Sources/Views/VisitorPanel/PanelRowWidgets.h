#pragma once

#include "Views/VisitorPanel/PanelButton.h"
#include "Views/VisitorPanel/PanelText.h"

#include <QLineEdit>

namespace orvia {

/// A text on one line that can be selected and copied. It is elided until it has the focus.
class SelectableLine : public QLineEdit {
    Q_OBJECT

public:
    explicit SelectableLine(QWidget* parent = nullptr);

    /// The accessible name is the whole text; @p description tells what it is the value of.
    void setValue(const QString& value, const QString& description);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return {0, sizeHint().height()}; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void applyTheme();
    void showText(bool whole);

    QString m_value;
};

/// A label in the key column and its value: text to select, or a link.
class LabelledRow : public QWidget {
    Q_OBJECT

public:
    explicit LabelledRow(QWidget* parent = nullptr);

    void setTexts(const QString& label, const QString& value, bool isLink, const QString& place = {});
    /// The part of the row that takes the focus.
    QWidget* valueWidget() const;
    static int rowHeight();

Q_SIGNALS:
    void linkClicked();

private:
    PanelLine* m_label;
    SelectableLine* m_text;
    LinkButton* m_link;
    bool m_isLink = false;
};

/// A visited page: its label, and when it was visited.
class JourneyRow : public PanelButton {
    Q_OBJECT

public:
    explicit JourneyRow(QWidget* parent = nullptr);

    void setTexts(const QString& label, const QString& time, const QString& place = {});
    static int rowHeight();
    QSize sizeHint() const override { return {0, rowHeight()}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_label;
    QString m_time;
};

/// An earlier conversation: status and date, and the preview of its last message where it has one.
class HistoryRow : public PanelButton {
    Q_OBJECT

public:
    explicit HistoryRow(QWidget* parent = nullptr);

    void setTexts(const QString& status, const QString& date, const QString& preview,
                  const QString& place = {});
    static int rowHeight(bool hasPreview);
    QSize sizeHint() const override { return {0, rowHeight(!m_preview.isEmpty())}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_status;
    QString m_date;
    QString m_preview;
};

} // namespace orvia
