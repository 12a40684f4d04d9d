// A window of the size of ours with nothing but a label, and all else as Qt has it.

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
