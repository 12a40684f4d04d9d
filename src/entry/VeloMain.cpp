#include <QIcon>
#include <QLibraryInfo>
#include <QScreen>
#include <QTranslator>
#include <stdexcept>
#include <string>

#include "config/Configure.h"
#include "config/Constant.h"
#include "entry/SingleApplication.h"
#include "entry/StartEnvironment.h"
#include "entry/TerminationSignals.h"
#include "platform/InheritedState.h"
#include "platform/Log.h"
#include "platform/Utils.h"
#include "shell/Accessibility.h"
#include "shell/ProtocolWin.h"
#include "shell/Shadow.h"
#include "shell/Typeface.h"
#include "shell/VeloWin.h"
#include "supervision/AppManager.h"

namespace {
constexpr char MODULE_TAG[] = "VELODESK";
constexpr int ARGUMENT_COUNT = 2;
constexpr char PROGRAM_NAME[] = "Velodesk";

/// Checks that the daemon has started this program: by its bare name, with the daemon's process id. Stores
/// that id and returns true, or logs the error.
bool CheckArgs(int argc, char** argv)
{
    if (argc != ARGUMENT_COUNT) {
        LOG_ERROR("param number error!");
        return false;
    }
    if (std::string(argv[0]) != PROGRAM_NAME) {
        LOG_ERROR("command analyze error!");
        return false;
    }
    int daemonPid = 0;
    try {
        daemonPid = std::stoi(argv[1]);
    } catch (const std::logic_error&) {
        LOG_ERROR("param analyze error!");
        return false;
    }
    Singleton<Configure>::GetInstance()->daemonPid = daemonPid;
    Brevora::Utils::SetDbusServerPid(daemonPid);
    return true;
}

void StopVelodeskd()
{
    std::string result;
    std::string errorMessage;
    Brevora::Utils::ExecutePopenAndReturnByDbus("velodeskd --exit", result, errorMessage);
}

/// Centres the window on the whole virtual desktop, not on the screen with the pointer.
void MoveToCentre(QWidget& window)
{
    const QSize desktop = QGuiApplication::primaryScreen()->virtualSize();
    window.move((desktop.width() - window.width()) / 2, (desktop.height() - window.height()) / 2);
}

/// Makes Qt's own texts Chinese in every locale, because all other texts are Chinese, too.
void TranslateQt(QCoreApplication& application)
{
    auto* translator = new QTranslator(&application);
    if (translator->load(QStringLiteral("qtbase_zh_CN"),
                         QLibraryInfo::location(QLibraryInfo::TranslationsPath))) {
        QCoreApplication::installTranslator(translator);
    }
}

/// Shows the agreement if it was never accepted. Returns true if it is accepted and no termination signal has
/// arrived.
bool RunAgreement(SingleApplication& application, ProtocolWin& protocolWin, StartEnvironment& environment)
{
    const Configure& configure = *Singleton<Configure>::GetInstance();
    if (!configure.IsStatementRead()) {
        application.SetMainWindow(protocolWin);
        protocolWin.show();
        environment.Restore();
        MoveToCentre(protocolWin);
        QApplication::exec();
    }
    // If the settings file cannot be written, the acceptance is valid for this run.
    return !TerminationSignals::HaveArrived() &&
           (configure.IsStatementRead() || protocolWin.IsReadStatement());
}

void RunMainWindow(SingleApplication& application, StartEnvironment& environment)
{
    LOG_INFO("Mainwindow start.");
    // Created before the pages, because it starts the status server.
    Singleton<AppManager>::GetInstance();
    VeloWin veloWin(nullptr);
    veloWin.exitHook = StopVelodeskd;
    application.SetMainWindow(veloWin);
    veloWin.SetAppObj(application);
    veloWin.show();
    environment.Restore();
    MoveToCentre(veloWin);
    QApplication::exec();
}
} // namespace

// Runs before static initialisation, because that starts shell commands, which inherit this state.
__attribute__((constructor(101))) static void ResetInheritedState()
{
    Brevora::InheritedState::Reset();
}

int main(int argc, char** argv)
{
    Singleton<Brevora::Logger>::GetInstance()->Init(GetConstant(Velodesk::LOG_FILE));
    if (!CheckArgs(argc, argv)) {
        return 1;
    }
    LOG_INFO("%sUse Shadow", Shadow::useShadow ? "" : "Don't ");

    StartEnvironment environment;
    SingleApplication application(argc, argv);
    // A QIcon of the file name would load Qt's MIME database, because the name has no suffix.
    QApplication::setWindowIcon(QIcon(QPixmap(QStringLiteral(":/velo/logo"))));
    if (GetConstant(Velodesk::DATA_DIR).empty()) {
        return 1;
    }
    if (application.InitLocalConnect() != 0) {
        LOG_ERROR("Init application connection failed.");
        return 1;
    }
    if (application.IsRunning()) {
        LOG_INFO("Application already running.");
        return 0;
    }
    TerminationSignals::QuitEventLoop();
    LOG_DEBUG("velodeskd start pid (%d).", Singleton<Configure>::GetInstance()->daemonPid);

    Typeface::UseEverywhere();
    TranslateQt(application);
    Accessibility::Install();
    ProtocolWin protocolWin(nullptr);
    protocolWin.exitHook = StopVelodeskd;
    if (!RunAgreement(application, protocolWin, environment)) {
        return 0;
    }
    RunMainWindow(application, environment);
    return 0;
}
