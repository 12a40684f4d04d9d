// Shows the window of the stand-in engine: the image of a phone. Exits with 0 when the window is closed, and
// is killed when the engine ends.

#include <QApplication>
#include <csignal>
#include <sys/prctl.h>
#include <unistd.h>

#include "PhoneWindow.h"

int main(int argc, char** argv)
{
    const pid_t engine = getppid();
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    QApplication application(argc, argv);
    if (getppid() != engine) {
        return 1;
    }
    PhoneWindow window;
    window.show();
    return QApplication::exec();
}
