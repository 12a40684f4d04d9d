#include "supervision/TandraApp.h"

#include "config/Configure.h"

TandraApp::TandraApp() : BaseApp(GetConstant(Velodesk::ENGINE_IPC_NAME))
{
    program = QString::fromStdString(GetConstant(Velodesk::ENGINE_PATH));
    arguments.append(QStringLiteral("%1").arg(Singleton<Configure>::GetInstance()->daemonPid));
}

void TandraApp::EventRunning()
{
    LOG_INFO("count is %d", count);
    if (count > 0) {
        emit AppEventRunning();
    }
}

#include "moc_TandraApp.cpp"
#include "moc_BaseApp.cpp"
