#pragma once

#include <QProxyStyle>

namespace orvia {

/// The Fusion style with the console's menus, scroll bars, focus frame and tooltips. Everything else that
/// looks special is painted by the widgets themselves.
class ConsoleStyle : public QProxyStyle {
    Q_OBJECT

public:
    ConsoleStyle();

    using QProxyStyle::polish;
    void polish(QWidget* widget) override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                           const QWidget* widget) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override;
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* returnData) const override;

private:
    void drawMenuItem(const QStyleOption* option, QPainter* painter, const QWidget* widget) const;
};

} // namespace orvia
