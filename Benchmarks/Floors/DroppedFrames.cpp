#include <QCoreApplication>
#include <QNetworkRequest>
#include <QUrl>
#include <QWebSocket>

/// The least that a client of the live channel can do: it reads every frame and drops it. The console's cost
/// of an event is held against it. Takes the address of the channel.
int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    if (argc != 2)
        return 2;
    QWebSocket socket;
    QObject::connect(&socket, &QWebSocket::disconnected, &application, &QCoreApplication::quit);
    socket.open(QUrl(QString::fromLocal8Bit(argv[1])));
    return QCoreApplication::exec();
}
