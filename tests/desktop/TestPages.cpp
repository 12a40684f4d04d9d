#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "DesktopTest.h"

class TestPages : public DesktopTest
{
    Q_OBJECT

private slots:
    void cleanup() { world.reset(); }

    void nameIsTypedAndStored_data();
    void nameIsTypedAndStored();
    void clickOutsideOfTheNameEndsTheEdit();
    void emptiedNameIsRestored();
    void menuIsDismissed_data();
    void menuIsDismissed();
    void menuButtonIsNotHoveredAfterTheMenuHides();
    void hoveredIconColoursTheText();
    void helpPagesAreShownAndClosed();
    void clearingWithoutAPhoneDoesNothing();
    void chosenFolderIsStored();
    void unusableFolderIsRejected_data();
    void unusableFolderIsRejected();
    void cancelledFolderDialogChangesNothing();
    void clearingErasesTheThreeFiles();
    void cancelledClearingKeepsTheFiles_data();
    void cancelledClearingKeepsTheFiles();
    void aboutPageShowsTheAgreement();

private:
    static constexpr int HELP = 0;
    static constexpr int SETTINGS = 1;
    static constexpr int ABOUT = 2;

    void Rename(const QString& text)
    {
        QVERIFY(world->BeginRename());
        for (int i = 0; i < 15; ++i) {
            world->Desktop().Key(QStringLiteral("BackSpace"));
        }
        world->Desktop().Type(text);
    }
    bool Stored(const QString& line) const
    {
        return world->SettingsText().contains(line + QLatin1Char('\n'));
    }
    void OpenSettings()
    {
        QVERIFY(world->ChooseFromMenu(SETTINGS));
        VERIFY_SOON(world->HasLog(QStringLiteral("Velodesk show set page.")));
    }
    /// Types a folder's path into the dialog and accepts it.
    void ChooseFolder(const QString& path)
    {
        VERIFY_SOON(world->FolderDialog().id != 0 &&
                    world->Desktop().ActiveWindow() == world->FolderDialog().id);
        world->Desktop().Type(path);
        world->Desktop().Key(QStringLiteral("Return"));
    }
    bool ShowsHelpMenu() const
    {
        return !world->PageHasColour(DOCUMENT, DOCUMENT_BACKGROUND) &&
               world->PageHasColour(HELP_ICON, ICON_BACKGROUND);
    }
    QString Others() const { return world->Home() + QStringLiteral("/Velodesk/Tandra/others/"); }
    QStringList TrustFiles() const { return QDir(Others()).entryList(QDir::Files, QDir::Name); }
    void BeginWithTrust()
    {
        Begin();
        QVERIFY(QDir().mkpath(Others()));
        for (const char* name : {"cd59de12d29aa1b8c695576f73fed493", "b527a39b0674942c13c451bc81ea6792",
                                 "2e5e9c1f131587ab665a2f38ec73e412", "another"}) {
            QFile file(Others() + QLatin1String(name));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write("secret");
        }
        world->AppendSettings(QStringLiteral("[VelodeskServer]\ntrustNum=3\n"));
        OpenSettings();
        world->ClickPage(CLEAR_BUTTON);
        VERIFY_SOON(world->SmallWindow().id != 0);
    }
};

void TestPages::nameIsTypedAndStored_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("stored");
    QTest::newRow("plain") << "My-PC_1"
                           << "My-PC_1";
    QTest::newRow("too long") << "abcdefghijklmnopqrst"
                              << "abcdefghijklmno";
    QTest::newRow("invalid characters") << "a b.c/d!e"
                                        << "abcde";
}

void TestPages::nameIsTypedAndStored()
{
    QFETCH(QString, typed);
    QFETCH(QString, stored);
    Begin();
    Rename(typed);
    world->Desktop().Key(QStringLiteral("Return"));
    VERIFY_SOON(Stored(QStringLiteral("devicename=") + stored));
    QVERIFY(
        world->HasLog(QStringLiteral("PC device name changed! oldName: Tandra; newName: %1").arg(stored)));
    // The other settings are unchanged.
    QVERIFY(Stored(QStringLiteral("statement=true")));
}

void TestPages::clickOutsideOfTheNameEndsTheEdit()
{
    Begin();
    Rename(QStringLiteral("beside"));
    world->ClickPage(EMPTY_AREA);
    VERIFY_SOON(Stored(QStringLiteral("devicename=beside")));
    QCOMPARE(world->CountLog(QStringLiteral("PC device name changed!")), 1);
}

void TestPages::emptiedNameIsRestored()
{
    Begin();
    const QPoint pencil = world->PencilPos();
    Rename(QString());
    world->Desktop().Key(QStringLiteral("Return"));
    // The pencil has its old position only if the field shows the old name.
    VERIFY_SOON(world->PencilPos() == pencil);
    Rename(QStringLiteral("x"));
    world->Desktop().Key(QStringLiteral("Return"));
    VERIFY_SOON(Stored(QStringLiteral("devicename=x")));
    QCOMPARE(world->CountLog(QStringLiteral("PC device name changed!")), 1);
    QVERIFY(world->HasLog(QStringLiteral("oldName: Tandra; newName: x")));
}

void TestPages::menuIsDismissed_data()
{
    QTest::addColumn<bool>("byKey");
    QTest::newRow("by a click elsewhere") << false;
    QTest::newRow("by a key") << true;
}

void TestPages::menuIsDismissed()
{
    QFETCH(bool, byKey);
    Begin();
    world->ClickCard(MENU_BUTTON);
    VERIFY_SOON(world->MenuWindow().id != 0);
    if (byKey) {
        world->Desktop().Key(QStringLiteral("Escape"));
    } else {
        world->ClickPage(EMPTY_AREA);
    }
    VERIFY_SOON(world->MenuWindow().id == 0);
    VERIFY_SOON(world->ShowsIdle());
}

void TestPages::menuButtonIsNotHoveredAfterTheMenuHides()
{
    Begin();
    const QPoint corner = world->OnCard(QPoint(168 + 562, 4));
    world->Desktop().MoveTo(world->OnCard(MENU_BUTTON));
    VERIFY_SOON(world->Desktop().PixelAt(corner) != WHITE);
    QVERIFY(world->ChooseFromMenu(SETTINGS));
    VERIFY_SOON(world->Desktop().PixelAt(corner) == WHITE);
    // The button is hovered again when the pointer enters it again.
    world->Desktop().MoveTo(world->OnPage(EMPTY_AREA));
    world->Desktop().MoveTo(world->OnCard(MENU_BUTTON));
    VERIFY_SOON(world->Desktop().PixelAt(corner) != WHITE);
}

void TestPages::hoveredIconColoursTheText()
{
    Begin();
    QVERIFY(world->ChooseFromMenu(HELP));
    VERIFY_SOON(world->PageHasColour(HELP_ICON, ICON_BACKGROUND));
    QVERIFY(!world->PageHasColour(HELP_TEXT, BLUE));
    world->Desktop().MoveTo(world->OnPage(HELP_ICON.center()));
    VERIFY_SOON(world->PageHasColour(HELP_TEXT, BLUE));
    QVERIFY(!world->PageHasColour(PROBLEMS_TEXT, BLUE));
    world->Desktop().MoveTo(world->OnPage(PROBLEMS_ICON.center()));
    VERIFY_SOON(world->PageHasColour(PROBLEMS_TEXT, BLUE) && !world->PageHasColour(HELP_TEXT, BLUE));
    world->Desktop().MoveTo(world->OnPage(HELP_TEXT.center()));
    VERIFY_SOON(world->PageHasColour(HELP_TEXT, BLUE) && !world->PageHasColour(PROBLEMS_TEXT, BLUE));
}

void TestPages::helpPagesAreShownAndClosed()
{
    Begin();
    QVERIFY(world->ChooseFromMenu(HELP));
    for (const QPoint entry :
         {HELP_ICON.center(), HELP_TEXT.center(), PROBLEMS_ICON.center(), PROBLEMS_TEXT.center()}) {
        VERIFY_SOON(ShowsHelpMenu());
        world->ClickPage(entry);
        VERIFY_SOON(world->PageHasColour(DOCUMENT, DOCUMENT_BACKGROUND));
        world->ClickPage(BACK_BUTTON);
    }
    VERIFY_SOON(ShowsHelpMenu());
    world->ClickPage(BACK_BUTTON);
    VERIFY_SOON(world->ShowsIdle());
}

void TestPages::clearingWithoutAPhoneDoesNothing()
{
    Begin();
    OpenSettings();
    // Without a trusted phone, the button is disabled.
    world->ClickPage(CLEAR_BUTTON);
    world->ClickPage(BACK_BUTTON);
    VERIFY_SOON(world->ShowsIdle());
    QVERIFY(!world->HasLog(QStringLiteral("ClearTrustDevices.")));
    // A click on the row of the list shows the page too.
    QVERIFY(world->ChooseFromMenu(SETTINGS));
    VERIFY_SOON(!world->ShowsIdle());
    world->ClickCard(APP_ROW);
    VERIFY_SOON(world->ShowsIdle());
}

void TestPages::chosenFolderIsStored()
{
    Begin();
    const QString folder = world->Home() + QStringLiteral("/with blank");
    QVERIFY(QDir().mkdir(folder));
    OpenSettings();
    world->ClickPage(CHANGE_BUTTON);
    ChooseFolder(folder);
    VERIFY_SOON(Stored(QStringLiteral("fileStorePath=") + folder));
    QVERIFY(world->HasLog(QStringLiteral("save file path:%1, success").arg(folder)));
    QCOMPARE(world->SmallWindow().id, 0UL);
}

void TestPages::unusableFolderIsRejected_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("errorLine");
    QTest::newRow("no permission") << "locked"
                                   << "ChangePath: directory %1 has fault right mode";
    QTest::newRow("link") << "link"
                          << "ChangePath: directory %1 link";
    QTest::newRow("below a link") << "link/inner"
                                  << "ChangePath: directory %2 link";
}

void TestPages::unusableFolderIsRejected()
{
    QFETCH(QString, kind);
    QFETCH(QString, errorLine);
    Begin();
    const QString folder = world->Home() + QLatin1Char('/') + kind;
    QVERIFY(QDir().mkpath(world->Home() + QStringLiteral("/real/inner")));
    QVERIFY(QFile::link(world->Home() + QStringLiteral("/real"), world->Home() + QStringLiteral("/link")));
    QVERIFY(QDir().mkdir(world->Home() + QStringLiteral("/locked")));
    QVERIFY(
        QFile::setPermissions(world->Home() + QStringLiteral("/locked"), QFile::ReadOwner | QFile::ExeOwner));
    const QString before = world->SettingsText();
    OpenSettings();
    world->ClickPage(CHANGE_BUTTON);
    ChooseFolder(folder);
    VERIFY_SOON(world->SmallWindow().id != 0);
    QVERIFY(world->HasLog(
        errorLine.contains(QLatin1String("%2"))
            ? QString(errorLine).replace(QLatin1String("%2"), world->Home() + QStringLiteral("/link"))
            : errorLine.arg(folder)));
    QCOMPARE(world->SettingsText(), before);
    // The dialog appears again until the user chooses a valid folder.
    world->ClickSmallCard(ONLY_BUTTON);
    ChooseFolder(world->Home() + QStringLiteral("/real"));
    VERIFY_SOON(Stored(QStringLiteral("fileStorePath=%1/real").arg(world->Home())));
    QFile::setPermissions(world->Home() + QStringLiteral("/locked"),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

void TestPages::cancelledFolderDialogChangesNothing()
{
    Begin();
    OpenSettings();
    const QString before = world->SettingsText();
    world->ClickPage(CHANGE_BUTTON);
    VERIFY_SOON(world->FolderDialog().id != 0 && world->Desktop().ActiveWindow() == world->FolderDialog().id);
    world->Desktop().Key(QStringLiteral("Escape"));
    VERIFY_SOON(world->HasLog(QStringLiteral("ChangePath: no directory choose")));
    QCOMPARE(world->SettingsText(), before);
    QCOMPARE(world->SmallWindow().id, 0UL);
}

void TestPages::clearingErasesTheThreeFiles()
{
    BeginWithTrust();
    world->ClickSmallCard(RIGHT_BUTTON);
    VERIFY_SOON(Stored(QStringLiteral("trustNum=0")));
    QCOMPARE(TrustFiles(), QStringList{QStringLiteral("another")});
    QVERIFY(!world->HasLog(QStringLiteral("SafeCoverRemove")));
    QCOMPARE(world->CountLog(QStringLiteral("RemoveFile filePath:")), 1);
    // The button is disabled now.
    world->ClickPage(CLEAR_BUTTON);
    world->ClickPage(BACK_BUTTON);
    VERIFY_SOON(world->ShowsIdle());
    QCOMPARE(world->CountLog(QStringLiteral("ClearTrustDevices.")), 1);
}

void TestPages::cancelledClearingKeepsTheFiles_data()
{
    QTest::addColumn<QPoint>("where");
    QTest::newRow("left button") << LEFT_BUTTON;
    QTest::newRow("close button") << SMALL_CLOSE_BUTTON;
}

void TestPages::cancelledClearingKeepsTheFiles()
{
    QFETCH(QPoint, where);
    BeginWithTrust();
    world->ClickSmallCard(where);
    VERIFY_SOON(world->SmallWindow().id == 0);
    world->ClickPage(BACK_BUTTON);
    VERIFY_SOON(world->ShowsIdle());
    QVERIFY(Stored(QStringLiteral("trustNum=3")));
    QCOMPARE(TrustFiles().size(), 4);
    QVERIFY(!world->HasLog(QStringLiteral("RemoveFile")));
}

void TestPages::aboutPageShowsTheAgreement()
{
    Begin();
    QVERIFY(world->ChooseFromMenu(ABOUT));
    VERIFY_SOON(world->PageHasColour(ABOUT_LINK, BLUE));
    world->ClickPage(ABOUT_LINK.center());
    VERIFY_SOON(world->PageHasColour(DOCUMENT, DOCUMENT_BACKGROUND));
    world->ClickPage(BACK_BUTTON);
    VERIFY_SOON(world->PageHasColour(ABOUT_LINK, BLUE));
    world->ClickPage(BACK_BUTTON);
    VERIFY_SOON(world->ShowsIdle());
    QCOMPARE(world->CountLog(QStringLiteral("Velodesk show about page.")), 1);
    QCOMPARE(world->CountLog(QStringLiteral("Velodesk back to app index: 0.")), 1);
}

QTEST_GUILESS_MAIN(TestPages)
#include "TestPages.moc"
