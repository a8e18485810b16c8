#pragma once

#include <QString>
#include <QStringList>

class QWidget;

namespace orvia {

class Session;

/// The states of the signed-in console of which pictures are taken. A scene needs one step or several, each
/// tried again until the widgets that it uses are there.
class Scene {
public:
    /// Makes the scene @p name; a name that @c names does not list shows the open conversation as it is.
    Scene(QString name, QWidget& window, Session& session);

    static QStringList names();
    /// Goes on with the next step; answers whether the scene is set.
    bool advance();

private:
    bool compose(const QString& text, bool asNote);
    bool search(const QString& text);
    bool click(const QString& name);
    bool openAdministration(const QString& page);
    bool showLiveMarks();

    const QString m_name;
    QWidget& m_window;
    Session& m_session;
    int m_step = 0;
};

} // namespace orvia
