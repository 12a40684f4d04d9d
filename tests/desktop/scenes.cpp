// Shows all windows of the program on a desktop with given settings and saves an image of each scene: names
// of one to fifteen letters, long paths, the documents down to their last lines, dialogs. The images of any
// two desktops must be identical. scripts/desktops compares them.
//
//   scenes --screenshots DIR [--dpi N] [--xft-dpi N] [--panel top|left|bottom|right] [--fonts FOLDER]
//
// LC_ALL sets the locale, VELODESK_WINDOW_MANAGER the window manager. FOLDER contains files as in a user's
// .config: kdeglobals, fontconfig/fonts.conf.

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <csignal>
#include <cstdio>

#include "DesktopWorld.h"
#include "Places.h"

using namespace Places;

namespace {
constexpr int POLL_INTERVAL_MS = 80;
constexpr int EQUAL_IMAGES = 3;
constexpr int LAST_PAGE_MS = 2000;
constexpr int WHEEL_DOWN = 5;
constexpr int NOTCHES = 4;
constexpr int PANEL_THICKNESS = 40;
constexpr int CORNER = 20;
constexpr QSize CARD(896, 504);
constexpr QSize SMALL_CARD(300, 168);
constexpr QPoint SMALL_BLANK(20, 100);
constexpr QRgb SMALL_BACKGROUND = qRgb(0xF7, 0xF7, 0xF7);
constexpr QPoint DOCUMENT_MIDDLE(300, 250);
constexpr QPoint AGREEMENT_MIDDLE(448, 230);
constexpr QPoint CARD_BLANK(40, 480);

const QStringList TYPED_NAMES{QStringLiteral("i"),
                              QStringLiteral("Study-PC_1"),
                              QStringLiteral("iiiiiiiiiiiiiii"),
                              QStringLiteral("WWWWWWWWWWWWWWW"),
                              QStringLiteral("mmmmmmmmmmmmmmm"),
                              QStringLiteral("___-_0123456789")};
const QStringList STORED_NAMES{QStringLiteral("客"), QStringLiteral("客厅电脑一"),
                               QStringLiteral("书房PC-2_a"), QStringLiteral("W一二三jj")};
const QString FIRST_NAME = QStringLiteral("Tandra");
const QString LONG_PATH =
    QStringLiteral("/home/user/") + QStringLiteral("a-folder-with-a-long-name/").repeated(6);
const QString CHINESE_PATH = QStringLiteral("/home/user/文档/手机<b>图片</b>&amp;");

class Scenes
{
public:
    Scenes(const QString& screenshots, const DesktopWorld::Options& options)
        : directory(screenshots), world(options)
    {}

    bool Begin(const QString& fonts, const QString& panel);
    bool Take();

private:
    void SaveCard(const QString& name);
    bool SaveSmallCard(const QString& name);
    void Save(const QString& name, QRect area);
    /// Appearance() returns the image of an area of the screen. StableImage() waits until the image does not
    /// change.
    QImage Appearance(const QRect& area) const;
    QImage StableImage(const QRect& area) const;
    /// Saves an image of each page of a document, until scrolling changes nothing.
    void Scroll(const QString& name, const QPoint& where);
    bool WaitUntil(const std::function<bool()>& reached, const char* what) const;
    QRect CardRect() const { return {world.OnCard(QPoint(0, 0)), CARD}; }

    bool TakeAgreement();
    bool TakeCast();
    bool TakeTypedNames();
    bool TakeHelp();
    bool TakeSettings();
    bool TakeAbout();
    bool TakeStoredName(const QString& name);
    bool Quit();
    void StoreSetting(const QByteArray& key, const QByteArray& value) const;

    QDir directory;
    DesktopWorld world;
    /// Whether to read the images from the windows instead of the screen: mutter sometimes delays a frame
    /// until another window repaints.
    const bool readsWindows = qgetenv("VELODESK_WINDOW_MANAGER").startsWith("mutter");
    int number = 0;
};

bool Scenes::WaitUntil(const std::function<bool()>& reached, const char* what) const
{
    const auto drawnAndReached = [&] {
        world.Desktop().Beat();
        return reached();
    };
    if (DesktopWorld::WaitFor(drawnAndReached)) {
        return true;
    }
    std::fprintf(stderr, "timeout while waiting for %s\n%s\n", what, qUtf8Printable(world.Describe()));
    world.SaveScreen(directory.filePath(QStringLiteral("failed.png")));
    return false;
}

QImage Scenes::Appearance(const QRect& area) const
{
    if (readsWindows) {
        for (const XDesktop::Window& window : {world.SmallWindow(), world.BigWindow()}) {
            if (window.id != 0 && window.rect.contains(area)) {
                return world.Desktop().AreaOf(window, area);
            }
        }
    }
    return world.Desktop().Area(area);
}

QImage Scenes::StableImage(const QRect& area) const
{
    QImage last = Appearance(area);
    int equal = 0;
    DesktopWorld::WaitFor([&] {
        DesktopWorld::WaitFor([] { return false; }, POLL_INTERVAL_MS);
        // An unchanged image is not sufficient, because the program or the compositor may be busy.
        const bool slept = world.AssistantSleeps();
        world.Desktop().Beat();
        DesktopWorld::WaitFor([this] { return world.Desktop().ShowsBeat(); });
        const QImage next = Appearance(area);
        equal = slept && next == last ? equal + 1 : 0;
        last = next;
        return equal == EQUAL_IMAGES;
    });
    return last;
}

void Scenes::Save(const QString& name, QRect area)
{
    QImage image = StableImage(area).convertToFormat(QImage::Format_RGB32);
    // Clears the corners, because the pixels outside the rounded corners belong to the desktop.
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const bool atSide = x < CORNER || x >= image.width() - CORNER;
            if (atSide && (y < CORNER || y >= image.height() - CORNER)) {
                image.setPixel(x, y, 0);
            }
        }
    }
    ++number;
    image.save(
        directory.filePath(QStringLiteral("%1-%2.png").arg(number, 2, 10, QLatin1Char('0')).arg(name)));
}

void Scenes::SaveCard(const QString& name)
{
    world.Desktop().MoveTo(world.OnCard(CARD_BLANK));
    Save(name, CardRect());
}

bool Scenes::SaveSmallCard(const QString& name)
{
    // The window exists before it is painted, and a compositor fades it in.
    if (!WaitUntil(
            [this] { return world.Desktop().PixelAt(world.OnSmallCard(SMALL_BLANK)) == SMALL_BACKGROUND; },
            "the small card")) {
        return false;
    }
    world.Desktop().MoveTo(world.OnSmallCard(SMALL_BLANK));
    Save(name, QRect(world.OnSmallCard(QPoint(0, 0)), SMALL_CARD));
    return true;
}

void Scenes::Scroll(const QString& name, const QPoint& where)
{
    for (int page = 1;; ++page) {
        SaveCard(QStringLiteral("%1-%2").arg(name).arg(page));
        // Waits after each step, because a busy program merges several steps.
        for (int notch = 0; notch < NOTCHES; ++notch) {
            const QImage before = Appearance(CardRect());
            world.Desktop().Click(where, WHEEL_DOWN);
            if (!DesktopWorld::WaitFor([&] { return Appearance(CardRect()) != before; }, LAST_PAGE_MS)) {
                if (notch > 0) {
                    SaveCard(name + QStringLiteral("-end"));
                }
                return;
            }
        }
    }
}

bool Scenes::Begin(const QString& fonts, const QString& panel)
{
    directory.mkpath(QStringLiteral("."));
    world.SetVariable(QStringLiteral("LC_ALL"), qEnvironmentVariable("LC_ALL"));
    if (!fonts.isEmpty()) {
        world.SetVariable(QStringLiteral("XDG_CONFIG_HOME"), fonts);
        world.SetVariable(QStringLiteral("XDG_CURRENT_DESKTOP"), QStringLiteral("KDE"));
        world.SetVariable(QStringLiteral("KDE_SESSION_VERSION"), QStringLiteral("5"));
    }
    const QString missing = world.Start();
    if (!missing.isEmpty()) {
        std::fprintf(stderr, "%s\n", qUtf8Printable(missing));
        return false;
    }
    const QStringList edges{QStringLiteral("top"), QStringLiteral("left"), QStringLiteral("right"),
                            QStringLiteral("bottom")};
    const int edge = edges.indexOf(panel);
    return edge < 0 || world.AddPanel(static_cast<Qt::Edge>(1 << edge), PANEL_THICKNESS);
}

bool Scenes::Take()
{
    bool ok = world.StartAssistant() && TakeAgreement() && TakeCast() && TakeTypedNames() && TakeHelp() &&
              TakeSettings() && TakeAbout() && Quit();
    for (const QString& name : STORED_NAMES) {
        ok = ok && TakeStoredName(name);
    }
    std::printf("%d scenes in %s\n", number, qUtf8Printable(directory.path()));
    return ok;
}

bool Scenes::TakeAgreement()
{
    Scroll(QStringLiteral("agreement"), world.OnCard(AGREEMENT_MIDDLE));
    world.ClickCard(AGREE_TICK);
    if (!WaitUntil([this] { return world.Desktop().PixelAt(world.OnCard(BEGIN_EDGE)) == BLUE; },
                   "the tick")) {
        return false;
    }
    SaveCard(QStringLiteral("agreement-ticked"));
    world.ClickCard(BEGIN_BUTTON);
    return WaitUntil(
        [this] {
            return world.HasLog(QStringLiteral("Mainwindow start.")) && world.BigWindow().id != 0 &&
                   world.ShowsIdle();
        },
        "the main window");
}

bool Scenes::TakeCast()
{
    SaveCard(QStringLiteral("main"));
    world.ClickPage(CAST_BUTTON);
    if (!WaitUntil([this] { return world.ShowsCasting(); }, "casting")) {
        return false;
    }
    SaveCard(QStringLiteral("casting"));
    world.ClickPage(CAST_BUTTON);
    return WaitUntil([this] { return world.ShowsIdle(); }, "the end of the cast");
}

bool Scenes::TakeTypedNames()
{
    QString before = FIRST_NAME;
    for (const QString& name : TYPED_NAMES) {
        if (!world.BeginRename()) {
            return false;
        }
        for (int i = 0; i < before.size(); ++i) {
            world.Desktop().Key(QStringLiteral("BackSpace"));
        }
        world.Desktop().Type(name);
        world.Desktop().Key(QStringLiteral("Return"));
        if (!WaitUntil(
                [&] { return world.SettingsText().contains(QStringLiteral("devicename=") + name + '\n'); },
                "the name")) {
            return false;
        }
        SaveCard(QStringLiteral("name-") + name);
        before = name;
    }
    return true;
}

bool Scenes::TakeHelp()
{
    bool ok = world.ChooseFromMenu(0);
    ok = ok && WaitUntil([this] { return world.PageHasColour(HELP_ICON, ICON_BACKGROUND); }, "the help");
    SaveCard(QStringLiteral("help"));
    world.ClickPage(HELP_ICON.center());
    ok = ok && WaitUntil([this] { return world.PageHasColour(DOCUMENT, DOCUMENT_BACKGROUND); }, "the guide");
    Scroll(QStringLiteral("guide"), world.OnPage(DOCUMENT_MIDDLE));
    world.ClickPage(BACK_BUTTON);
    ok =
        ok && WaitUntil([this] { return world.PageHasColour(HELP_ICON, ICON_BACKGROUND); }, "the help again");
    world.ClickPage(PROBLEMS_ICON.center());
    ok = ok &&
         WaitUntil([this] { return world.PageHasColour(DOCUMENT, DOCUMENT_BACKGROUND); }, "the problems");
    Scroll(QStringLiteral("problems"), world.OnPage(DOCUMENT_MIDDLE));
    return ok;
}

void Scenes::StoreSetting(const QByteArray& key, const QByteArray& value) const
{
    QFile file(world.Home() + QStringLiteral("/Velodesk/velodesk.conf"));
    if (!file.open(QIODevice::ReadWrite)) {
        return;
    }
    QList<QByteArray> lines = file.readAll().split('\n');
    for (QByteArray& line : lines) {
        if (line.startsWith(key + '=')) {
            line = key + '=' + value;
        }
    }
    file.resize(0);
    file.write(lines.join('\n'));
}

bool Scenes::TakeSettings()
{
    world.AppendSettings(QStringLiteral("[VelodeskServer]\ntrustNum=2\n"));
    QDir(world.Home()).mkpath(QStringLiteral("Velodesk/Tandra/others"));
    bool ok = true;
    int scene = 0;
    for (const QString& path : {LONG_PATH, CHINESE_PATH}) {
        StoreSetting("fileStorePath", path.toLocal8Bit());
        const int shown = world.CountLog(QStringLiteral("Velodesk show set page."));
        ok = ok && world.ChooseFromMenu(1) &&
             WaitUntil([&] { return world.CountLog(QStringLiteral("Velodesk show set page.")) > shown; },
                       "the settings");
        SaveCard(QStringLiteral("settings-%1").arg(++scene));
    }
    world.ClickPage(CLEAR_BUTTON);
    ok = ok && WaitUntil([this] { return world.SmallWindow().id != 0; }, "the question");
    ok = ok && SaveSmallCard(QStringLiteral("clear-question"));
    world.ClickSmallCard(RIGHT_BUTTON);
    return ok && WaitUntil([this] { return world.SettingsText().contains(QStringLiteral("trustNum=0\n")); },
                           "the answer");
}

bool Scenes::TakeAbout()
{
    bool ok = world.ChooseFromMenu(2);
    ok = ok && WaitUntil([this] { return world.PageHasColour(ABOUT_LINK, BLUE); }, "the about page");
    SaveCard(QStringLiteral("about"));
    world.ClickPage(ABOUT_LINK.center());
    ok = ok &&
         WaitUntil([this] { return world.PageHasColour(DOCUMENT, DOCUMENT_BACKGROUND); }, "the agreement");
    Scroll(QStringLiteral("about-agreement"), world.OnPage(DOCUMENT_MIDDLE));
    return ok;
}

bool Scenes::Quit()
{
    world.ClickCard(CLOSE_BUTTON);
    if (!WaitUntil([this] { return world.SmallWindow().id != 0; }, "the exit question") ||
        !SaveSmallCard(QStringLiteral("quit-question"))) {
        return false;
    }
    world.ClickSmallCard(RIGHT_BUTTON);
    return world.WaitForDaemonEnd();
}

bool Scenes::TakeStoredName(const QString& name)
{
    StoreSetting("devicename", name.toUtf8());
    if (!world.StartAssistant() || !WaitUntil([this] { return world.ShowsIdle(); }, "the main window")) {
        return false;
    }
    SaveCard(QStringLiteral("name-") + name);
    if (!world.SettingsText().contains(QStringLiteral("devicename=") + name + QLatin1Char('\n'))) {
        std::fprintf(stderr, "the program has changed the stored name %s\n", qUtf8Printable(name));
        return false;
    }
    kill(static_cast<pid_t>(world.AssistantPid()), SIGKILL);
    return world.WaitForDaemonEnd();
}
} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addOptions({{QStringLiteral("screenshots"), QString(), QStringLiteral("DIR")},
                       {QStringLiteral("dpi"), QString(), QStringLiteral("N"), QStringLiteral("96")},
                       {QStringLiteral("xft-dpi"), QString(), QStringLiteral("N")},
                       {QStringLiteral("panel"), QString(), QStringLiteral("EDGE")},
                       {QStringLiteral("fonts"), QString(), QStringLiteral("FOLDER")}});
    parser.process(application);
    DesktopWorld::Options options;
    options.agreed = false;
    options.dpi = parser.value(QStringLiteral("dpi")).toInt();
    if (parser.isSet(QStringLiteral("xft-dpi"))) {
        options.resources = QStringLiteral("Xft.dpi: ") + parser.value(QStringLiteral("xft-dpi"));
    }
    Scenes scenes(parser.value(QStringLiteral("screenshots")), options);
    return scenes.Begin(parser.value(QStringLiteral("fonts")), parser.value(QStringLiteral("panel"))) &&
                   scenes.Take()
               ? 0
               : 1;
}
