// label-window SOCKET: listens on a local socket and shows a text in a label. The report "stop" clears the
// label, all others set it. This is the least work that a Qt program can do for a report.

#include <QApplication>
#include <QLabel>
#include <QLocalServer>
#include <QLocalSocket>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QWidget window(nullptr, Qt::Window | Qt::FramelessWindowHint);
    window.setGeometry(0, 0, 898, 506);
    QLabel label(&window);
    label.setGeometry(20, 20, 200, 40);
    window.show();

    QLocalServer server;
    QObject::connect(&server, &QLocalServer::newConnection, [&server, &label] {
        QLocalSocket* socket = server.nextPendingConnection();
        QObject::connect(socket, &QIODevice::readyRead, [socket, &label] {
            label.setText(socket->readAll().contains("stop") ? QString() : QStringLiteral("████ 投屏中"));
        });
    });
    if (!server.listen(QString::fromLocal8Bit(argv[argc - 1]))) {
        return 1;
    }
    return QApplication::exec();
}
