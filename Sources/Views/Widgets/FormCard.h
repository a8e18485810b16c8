#pragma once

#include "Theme/Theme.h"
#include "Views/Widgets/Button.h"

#include <QWidget>

class QVBoxLayout;

namespace orvia {

class Label;

/// Rows on a rounded card with hairlines between them.
class FormCard : public QWidget {
    Q_OBJECT

public:
    explicit FormCard(QWidget* parent = nullptr);

    /// Adds @p row at the end; the card owns it.
    void addRow(QWidget* row);
    void insertRow(int index, QWidget* row);
    /// Takes @p row out and deletes it.
    void removeRow(QWidget* row);
    /// Removes and deletes every row.
    void clear();
    int rowCount() const;
    QWidget* row(int index) const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QVBoxLayout* m_rows;
};

/// A card under its optional heading, with an optional caption below it.
class FormSection : public QWidget {
    Q_OBJECT

public:
    explicit FormSection(const QString& heading = {}, QWidget* parent = nullptr);

    FormCard* card() const { return m_card; }
    void addRow(QWidget* row) { m_card->addRow(row); }
    /// Shows @p text below the card; an empty text hides the line.
    void setFooter(const QString& text);

private:
    FormCard* m_card;
    Label* m_footer = nullptr;
};

/// A label and its control, 40 high. The control is named by the label: a field, a switch by its accessible
/// name, a picker by its description.
class FormRow : public QWidget {
    Q_OBJECT

public:
    /// @p control stands at the trailing edge and belongs to the row. A line edit takes 252 pixels.
    FormRow(const QString& label, QWidget* control, QWidget* parent = nullptr);
    /// A read-only row: @p value is a text that can be selected.
    FormRow(const QString& label, const QString& value, QWidget* parent = nullptr);

    /// Changes the text of a read-only row.
    void setValue(const QString& value);

private:
    void build(const QString& label, QWidget* control);

    Label* m_value = nullptr;
};

/// A row that acts as one button: a link to a page (icon and chevron) or a bare action ("Sign Out").
class FormActionRow : public BusyButton {
    Q_OBJECT

public:
    /// A link: icon, text, chevron at the trailing edge.
    FormActionRow(const QString& iconName, const QString& text, QWidget* parent = nullptr);
    /// An action without a symbol; @p color is @c danger for destructive ones.
    explicit FormActionRow(const QString& text, ColorRole color = ColorRole::textPrimary,
                           QWidget* parent = nullptr);

    QSize sizeHint() const override;

protected:
    ColorRole spinnerColor() const override { return ColorRole::textSecondary; }
    void paintEvent(QPaintEvent* event) override;

private:
    void prepare();

    QString m_iconName;
    QString m_text;
    ColorRole m_color = ColorRole::textPrimary;
};

} // namespace orvia
