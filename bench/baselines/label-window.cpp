// label-window SOCKET: listens on a local socket, and shows what it is sent, and nothing for a "stop". The
// least that a Qt program can do with a report.

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
