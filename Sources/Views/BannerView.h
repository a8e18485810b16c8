#pragma once

#include <QWidget>

#include <optional>

class QVariantAnimation;

namespace orvia {

/// The transient message at the top of the window: one line on a red panel that slides in and out. It takes
/// neither focus nor mouse; assistive tools hear it as an alert.
class BannerView : public QWidget {
    Q_OBJECT

public:
    explicit BannerView(QWidget* parent);

    /// Slides in with @p text, exchanges the text in place, or slides out when it is absent.
    void present(const std::optional<QString>& text);
    /// The whole text that is or was last shown.
    const QString& text() const { return m_text; }
    /// Whether the text does not fit the panel.
    bool isElided() const;
    /// The visible panel, without the room for its shadow, in the parent's coordinates.
    QRect panelInParent() const;
    /// Centres the banner at the top of its parent; for the parent's resize.
    void place();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void slide(bool in);
    void announce();
    QRect panel() const;

    QString m_text;
    QString m_shown; ///< the text as it is painted
    bool m_presented = false;
    qreal m_share = 0; ///< how far in the banner is, from 0 to 1
    QVariantAnimation* m_movement;
};

} // namespace orvia
