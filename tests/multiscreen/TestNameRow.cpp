#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QTest>
#include <memory>

#include "SettingsFile.h"
#include "multiscreen/MultiScreen.h"
#include "support/CapturedLog.h"
#include "support/ProgramMain.h"
#include "support/Sandbox.h"
#include "support/Widgets.h"

namespace {
constexpr int ROOM_TO_SPARE = 400;

QImage OnWhite(QWidget& widget)
{
    QImage image(widget.size(), QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    widget.render(&painter, QPoint(), QRegion(), QWidget::DrawChildren);
    return image;
}

/// Whether `seen` contains every non-background pixel of `wanted`; additional pixels, such as a cursor, are
/// allowed.
bool HoldsInk(const QImage& seen, const QImage& wanted)
{
    for (int y = 0; y < wanted.height(); ++y) {
        for (int x = 0; x < wanted.width(); ++x) {
            const QRgb ink = wanted.pixel(x, y);
            if (ink != qRgb(0xFF, 0xFF, 0xFF) && (!seen.valid(x, y) || seen.pixel(x, y) != ink)) {
                return false;
            }
        }
    }
    return true;
}

int LastInk(const QImage& image)
{
    for (int x = image.width() - 1; x >= 0; --x) {
        for (int y = 0; y < image.height(); ++y) {
            if (image.pixel(x, y) != qRgb(0xFF, 0xFF, 0xFF)) {
                return x;
            }
        }
    }
    return -1;
}
} // namespace

/// Verifies that the name is shown to its last pixel.
class TestNameRow : public QObject
{
    Q_OBJECT

private slots:
    void init() { log = std::make_unique<CapturedLog>(); }
    void cleanup()
    {
        page.reset();
        log.reset();
    }

    void nameIsShownWhole_data();
    void nameIsShownWhole();
    void nameIsShownWholeAfterEachTypedLetter_data() { nameIsShownWhole_data(); }
    void nameIsShownWholeAfterEachTypedLetter();
    void pencilCoversNothing_data() { nameIsShownWhole_data(); }
    void pencilCoversNothing();
    void widgetsOnThePageKeepTheApplicationsFont();

private:
    QLineEdit& Field() { return *Find<QLineEdit>(*page, "ComputerNameEdit"); }
    void Start(const QString& name);
    /// Returns the text as the field paints it in a wider field.
    QImage Wanted(const QString& text);

    std::unique_ptr<CapturedLog> log;
    std::unique_ptr<MultiScreen> page;
};

void TestNameRow::Start(const QString& name)
{
    SettingsFile::Write("[Tandra]\ndevicename=" + name.toUtf8() + "\n");
    page = std::make_unique<MultiScreen>(nullptr);
    page->show();
    QVERIFY(QTest::qWaitForWindowActive(page.get()));
    QCOMPARE(Field().text(), name);
}

QImage TestNameRow::Wanted(const QString& text)
{
    QLineEdit roomy(Field().parentWidget());
    roomy.setStyleSheet(Field().styleSheet());
    roomy.setFont(Field().font());
    roomy.setAlignment(Field().alignment());
    roomy.setEnabled(false);
    roomy.setText(text);
    roomy.resize(ROOM_TO_SPARE, Field().height());
    return OnWhite(roomy);
}

void TestNameRow::nameIsShownWhole_data()
{
    QTest::addColumn<QString>("name");
    const QString letters = QStringLiteral("iWmj_-1gQ");
    for (const QChar letter : letters) {
        for (const int count : {1, 2, 7, 15}) {
            const QString name(count, letter);
            QTest::newRow(qPrintable(name)) << name;
        }
    }
    for (const char* name : {"Study-PC_1", "My_PC-1", "abcdefghijklmno", "0123456789-_-_-", "客", "客厅电脑",
                             "客厅电脑一", "龥龥龥龥龥", "书房PC-2_a", "W一二三jj", "j客", "客W客W客W"}) {
        QTest::newRow(name) << QString::fromUtf8(name);
    }
}

void TestNameRow::nameIsShownWhole()
{
    QFETCH(QString, name);
    Start(name);
    QVERIFY(HoldsInk(OnWhite(Field()), Wanted(name)));
}

void TestNameRow::nameIsShownWholeAfterEachTypedLetter()
{
    QFETCH(QString, name);
    Start(QStringLiteral("Old"));
    QTest::mouseClick(Find<QPushButton>(*page, "NameEditBtn"), Qt::LeftButton);
    Field().selectAll();
    for (int length = 1; length <= name.size(); ++length) {
        QInputMethodEvent event;
        event.setCommitString(name.mid(length - 1, 1));
        QCoreApplication::sendEvent(&Field(), &event);
        QCOMPARE(Field().text(), name.left(length));
        QVERIFY2(HoldsInk(OnWhite(Field()), Wanted(Field().text())), qPrintable(Field().text()));
    }
}

void TestNameRow::pencilCoversNothing()
{
    QFETCH(QString, name);
    Start(name);
    const auto& pencil = *Find<QPushButton>(*page, "NameEditBtn");
    // The first column of the pencil's image is empty.
    QVERIFY(Field().x() + LastInk(Wanted(name)) <= pencil.x());
}

void TestNameRow::widgetsOnThePageKeepTheApplicationsFont()
{
    Start(QStringLiteral("Old"));
    const QFont application = QApplication::font();
    for (const char* name : {"ScreenWidget", "frame", "NameEditBtn", "StatusFrame", "page3", "setBack"}) {
        const QFont font = Find(*page, name)->font();
        QCOMPARE(font.pixelSize(), application.pixelSize());
        QCOMPARE(font.letterSpacing(), 0.0);
    }
    QVERIFY(page->font().letterSpacing() > Field().font().letterSpacing());
}

int main(int argc, char** argv)
{
    EnterSandbox(argc, argv);
    return RunAsProgram<TestNameRow>(argc, argv);
}

#include "TestNameRow.moc"
