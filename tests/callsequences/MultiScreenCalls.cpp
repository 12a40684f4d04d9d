// The button and the status text of the page always show the same state.

#include <QDialog>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include "callsequences/CallSequence.h"
#include "config/Constant.h"
#include "multiscreen/MultiScreen.h"
#include "support/Files.h"
#include "support/Widgets.h"

namespace {
using StrConstant = Constant<Velodesk::StrConstName, std::string>;

class MultiScreenCalls : public CallSequence
{
public:
    explicit MultiScreenCalls(quint32 seed);

    void Step() override;
    void End() override;

private:
    void ReplaceEngine();
    void Click();
    void Call();
    void EditName();
    void CallSlotOfTheManager();
    void CloseDialogs();

    QTimer dialogs;
    std::unique_ptr<MultiScreen> page;
};

MultiScreenCalls::MultiScreenCalls(quint32 seed)
    : CallSequence(seed), page(std::make_unique<MultiScreen>(nullptr))
{
    const AppManager* manager = Singleton<AppManager>::GetInstance();
    QObject::connect(manager, &AppManager::AppFinished, &dialogs, [this] { StepInSlot(); });
    QObject::connect(manager, &AppManager::AppError, &dialogs, [this] { StepInSlot(); });
    QObject::connect(&dialogs, &QTimer::timeout, &dialogs, [this] { CloseDialogs(); });
    dialogs.start(5);
    page->show();
    ReplaceEngine();
}

void MultiScreenCalls::CloseDialogs()
{
    auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    if (dialog == nullptr) {
        return;
    }
    if (OneIn(3)) {
        const auto buttons = dialog->findChildren<QPushButton*>();
        if (!buttons.isEmpty()) {
            Any(buttons)->click();
            return;
        }
    }
    dialog->reject();
}

void MultiScreenCalls::ReplaceEngine()
{
    static const QList<QByteArray> SCRIPTS{"exit 0", "exit 4", "kill -SEGV $$", "exec sleep 0.05",
                                           "trap '' TERM; exec sleep 0.2"};
    const QString path = QString::fromStdString(StrConstant::GetConstant(Velodesk::ENGINE_PATH));
    QDir().mkpath(path.section(QLatin1Char('/'), 0, -2));
    QFile::remove(path);
    if (OneIn(5)) {
        return;
    }
    WriteAll(path, (OneIn(5) ? "#!/nowhere/shell\n" : "#!/bin/sh\n") + Any(SCRIPTS) + "\n");
    SetMode(path, OneIn(5) ? 0600U : 0700U);
}

void MultiScreenCalls::Click()
{
    static const QList<QByteArray> BUTTONS{
        "PreScreenBtn",     "PreScreenBtn",   "PreScreenBtn",     "NameEditBtn",
        "ReturnBtn",        "NewHandBtn",     "NewHandReturnBtn", "CommonProblemBtn",
        "ProblemReturnBtn", "NewHandTextBtn", "CommonProTextBtn", "clear",
        "setBack",          "change"};
    Find<QPushButton>(*page, Any(BUTTONS).constData())->click();
}

void MultiScreenCalls::Call()
{
    switch (Pick(8)) {
    case 0:
        page->SetPreScreenStatus(OneIn(2));
        break;
    case 1:
        page->ShowSetView();
        break;
    case 2:
        REQUIRE(!page->PathHasLink(QStringLiteral("/")));
        page->PathHasLink(QDir::homePath());
        break;
    case 3:
        page->ClickPreScreenBtn();
        break;
    case 4:
        page->TrustOK();
        page->ClearTrustDevices();
        break;
    case 5:
        page->SetHelpPageBtn();
        page->ClickHelpBtn();
        break;
    case 6:
        page->InitHtmlContent(Find(*page, "NewHandFrame"), QStringLiteral(":/nowhere"));
        break;
    default:
        page->ComputerNameTextEdited(QString::fromUtf8(AnyBytes(30)));
        break;
    }
}

void MultiScreenCalls::EditName()
{
    page->ClickNameEditBtn();
    auto* field = Find<QLineEdit>(*page, "ComputerNameEdit");
    if (OneIn(4)) {
        field->clear();
    }
    QTest::keyClicks(field, QString::number(Pick(100000)));
    if (OneIn(2)) {
        page->ComputerNameEditEditingFinished();
        REQUIRE(!field->isEnabled());
        REQUIRE(!field->text().isEmpty());
    }
}

void MultiScreenCalls::CallSlotOfTheManager()
{
    const auto type = OneIn(3) ? AppManager::APP_TYPE_END : AppManager::TANDRA_APP;
    switch (Pick(4)) {
    case 0:
        page->ProcessStarted(type);
        break;
    case 1:
        page->ProcessFinished(type, Pick(256));
        break;
    case 2:
        page->ProcessAppError(type, QProcess::FailedToStart);
        break;
    default:
        page->ProcessEvent(type, static_cast<AppManager::AppEventType>(Pick(4)));
        break;
    }
}

void MultiScreenCalls::Step()
{
    switch (Pick(7)) {
    case 0:
        ReplaceEngine();
        break;
    case 1:
    case 2:
        Click();
        break;
    case 3:
        Call();
        break;
    case 4:
        EditName();
        break;
    case 5:
        CallSlotOfTheManager();
        break;
    default:
        Spin(Pick(20));
        break;
    }
    const bool isCasting = Find<QPushButton>(*page, "PreScreenBtn")->text() == QStringLiteral("结束投屏");
    REQUIRE(Find<QLabel>(*page, "ScreenLabel")->text() ==
            (isCasting ? QStringLiteral("投屏中") : QStringLiteral("未投屏")));
    REQUIRE(QFile::exists(QString::fromStdString(StrConstant::GetConstant(Velodesk::CONF_FILE))));
}

void MultiScreenCalls::End()
{
    DisableStepsInSlots();
    Singleton<AppManager>::GetInstance()->StopAll();
    page.reset();
    Spin(50);
}
} // namespace

std::unique_ptr<CallSequence> MakeMultiScreenCalls(quint32 seed)
{
    return std::make_unique<MultiScreenCalls>(seed);
}
