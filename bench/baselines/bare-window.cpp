// A window that has the size of the main window and contains only a label. Everything else is Qt's default.

#include <QApplication>
#include <QLabel>
#include <QWidget>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QWidget window(nullptr, Qt::Window | Qt::FramelessWindowHint);
    window.resize(898, 506);
    QLabel label(QStringLiteral("未投屏"), &window);
    label.move(20, 20);
    window.show();
    return QApplication::exec();
}
