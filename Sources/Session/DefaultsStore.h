#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace orvia {

/// The per-user defaults: byte values by key in an INI file under the XDG configuration directory. A damaged
/// or unreadable file counts as empty and is replaced whole, atomically, by the next write; failures to write
/// are silent. Main thread.
class DefaultsStore {
public:
    /// The user's own store, orvia/defaults.ini.
    DefaultsStore();
    explicit DefaultsStore(QString file);

    std::optional<QByteArray> data(const QString& key) const;
    void setData(const QByteArray& value, const QString& key);
    void remove(const QString& key);

private:
    QString m_file;
};

} // namespace orvia
