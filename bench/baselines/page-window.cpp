// page-window SOCKET: listens on a local socket, and shows what it is sent as the assistant's page does:
// another style sheet and text on a button, another text, another picture. A plain page: no card, no shadow,
// no layers.

#include <QApplication>
#include <QFrame>
#include <QLabel>
#include <QLocalServer>
#include <QLocalSocket>
#include <QPushButton>

namespace {
const QString START_STYLE = QStringLiteral(
    "QPushButton{color:#FFFFFF;border:0px solid #2B6FF2;font:14px Noto Sans CJK SC;border-radius:16px;"
    "background-color:#2B6FF2;}QPushButton:hover{background-color:#3E80FF;}"
    "QPushButton:pressed{background-color:#1953C4;}");
const QString STOP_STYLE = QStringLiteral(
    "QPushButton{color:#2B6FF2;border:2px solid #2B6FF2;font:14px Noto Sans CJK SC;border-radius:16px;"
    "background-color:#FFFFFF;}QPushButton:hover{color:#3E80FF;background-color:#FFFFFF;}"
    "QPushButton:pressed{color:#1953C4;background-color:#FFFFFF;}");
} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QWidget page(nullptr, Qt::Window | Qt::FramelessWindowHint);
    page.setGeometry(0, 0, 898, 506);
    QPushButton button(&page);
    button.setGeometry(560, 20, 112, 32);
    QLabel text(&page);
    text.setGeometry(336, 328, 48, 28);
    // As large as the picture, which is not stretched.
    QFrame picture(&page);
    picture.setGeometry(207, 118, 308, 192);

    const auto show = [&](bool casting) {
        button.setText(casting ? QStringLiteral("结束投屏") : QStringLiteral("开始投屏"));
        button.setStyleSheet(casting ? STOP_STYLE : START_STYLE);
        text.setText(casting ? QStringLiteral("投屏中") : QStringLiteral("未投屏"));
        picture.setStyleSheet(casting ? QStringLiteral("border-image: url(:/velo/prescreensucess)")
                                      : QStringLiteral("border-image: url(:/velo/prescreen)"));
    };
    show(false);
    page.show();

    QLocalServer server;
    QObject::connect(&server, &QLocalServer::newConnection, [&server, &show] {
        QLocalSocket* socket = server.nextPendingConnection();
        QObject::connect(socket, &QIODevice::readyRead,
                         [socket, &show] { show(!socket->readAll().contains("stop")); });
    });
    if (!server.listen(QString::fromLocal8Bit(argv[argc - 1]))) {
        return 1;
    }
    return QApplication::exec();
}
