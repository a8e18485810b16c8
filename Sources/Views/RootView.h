#pragma once

#include <QWidget>

namespace orvia {

class BannerView;
class Session;

/// The window's content: the sign-in screen without a token, else the main screen, and the banner over both.
/// Its first appearance starts the session.
class RootView : public QWidget {
    Q_OBJECT

public:
    /// @p session outlives the view.
    explicit RootView(Session& session, QWidget* parent = nullptr);

    /// The screen on show: a LoginView or a MainSplitView.
    QWidget* screen() const { return m_screen; }
    BannerView* banner() const { return m_banner; }

Q_SIGNALS:
    /// The first picture of the screen is on its way to the display.
    void painted();

protected:
    bool event(QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void followToken();

    Session& m_session;
    QWidget* m_screen = nullptr;
    bool m_signedIn = false;
    bool m_appeared = false;
    bool m_wasPainted = false;
    BannerView* m_banner;
};

} // namespace orvia
