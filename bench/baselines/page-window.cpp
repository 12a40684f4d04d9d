// page-window SOCKET: listens on a local socket and shows reports as the assistant's page does: it changes
// the style sheet and text of a button, the text of a label, and an image. The page has no card, no shadow
// and no layers.

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
    // The frame has the size of the image, so that Qt does not scale it.
    QFrame image(&page);
    image.setGeometry(207, 118, 308, 192);

    const auto show = [&](bool casting) {
        button.setText(casting ? QStringLiteral("结束投屏") : QStringLiteral("开始投屏"));
        button.setStyleSheet(casting ? STOP_STYLE : START_STYLE);
        text.setText(casting ? QStringLiteral("投屏中") : QStringLiteral("未投屏"));
        image.setStyleSheet(casting ? QStringLiteral("border-image: url(:/velo/prescreensucess)")
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
