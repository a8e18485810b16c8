#pragma once

#include <QObject>
#include <QString>

#include <memory>
#include <optional>

namespace orvia {

/// Whether the desktop prefers dark or light, from the portal's setting "color-scheme"
/// (org.freedesktop.portal.Settings), live. Nothing here waits. Main thread.
class Appearance : public QObject {
    Q_OBJECT

public:
    enum class Scheme { light, dark };

    /// @p busConnection names a QtDBus connection; the session bus when it is empty.
    explicit Appearance(const QString& busConnection = {}, QObject* parent = nullptr);
    ~Appearance() override;

    /// The preference; none where there is no bus, no portal, no preference, or no answer yet.
    std::optional<Scheme> preferred() const { return m_preferred; }

Q_SIGNALS:
    /// The preference is another one than before.
    void changed();

private:
    class Listener;

    void setPreferred(std::optional<Scheme> preferred);

    std::optional<Scheme> m_preferred;
    std::unique_ptr<Listener> m_listener;
};

} // namespace orvia
