#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QLibraryInfo>

#include "DesktopTest.h"

/// Uses the program as a screen reader does: only through the accessibility bus, without pointer and
/// keyboard.
class TestScreenReader : public DesktopTest
{
    Q_OBJECT

private slots:
    void cleanup();

    void programIsUsableWithTheActionPressOnly();

public slots:
    /// Records a state change that the program has sent to screen readers.
    void ReceiveStateChange(const QDBusMessage& signal);

private:
    /// An object of the accessibility tree: the service that owns it, and its path.
    struct Node
    {
        QString service;
        QString path;
    };
    /// The numbers of roles and states in AT-SPI. Their names are translated, so the tests do not use them.
    enum Role
    {
        CHECK_BOX = 7,
        DIALOG = 16,
        LABEL = 29,
        LIST_ITEM = 32,
        MENU_ITEM = 35,
        PANEL = 39,
        POPUP_MENU = 41,
        PUSH_BUTTON = 43,
        APPLICATION = 75,
    };
    enum State
    {
        CHECKED = 4,
        SELECTED = 23,
        SENSITIVE = 24,
        SHOWING = 25,
    };

    QDBusMessage Call(const Node& node, const QString& interface, const QString& method,
                      const QVariantList& arguments = {}) const;
    QString Name(const Node& node) const;
    uint RoleOf(const Node& node) const;
    bool Is(const Node& node, State state) const;
    QList<Node> Children(const Node& node) const;
    /// Returns the first shown descendant with that role and name. The path is empty if there is none.
    Node Search(const Node& top, Role role, const QString& name) const;
    Node Find(Role role, const char* name) const;
    bool Shows(Role role, const char* name) const;
    bool Press(Role role, const char* name) const;
    QString Tree(const Node& top, int depth = 0) const;
    void ConnectToAccessibilityBus();
    void ListenToStateChanges();

    /// The state changes so far, such as "checked 1".
    QStringList stateChanges;
    QDBusConnection bus = QDBusConnection(QStringLiteral("accessibility"));
};

namespace {
const QString ACCESSIBLE = QStringLiteral("org.a11y.atspi.Accessible");
const QString ACTION = QStringLiteral("org.a11y.atspi.Action");
const QString REGISTRY = QStringLiteral("org.a11y.atspi.Registry");
const QString REGISTRY_PATH = QStringLiteral("/org/a11y/atspi/registry");
const QString ROOT = QStringLiteral("/org/a11y/atspi/accessible/root");
} // namespace

/// Fails the test if the condition does not become true, and prints the accessibility tree.
#define VERIFY_ACCESSIBLE(condition)                                                                         \
    VERIFY_SOON_WITH(condition, #condition, world->Describe() + Tree({REGISTRY, ROOT}))

void TestScreenReader::cleanup()
{
    QDBusConnection::disconnectFromBus(QStringLiteral("accessibility"));
    world.reset();
}

void TestScreenReader::ConnectToAccessibilityBus()
{
    const QString session = QStringLiteral("session");
    const QDBusMessage address =
        QDBusConnection::connectToBus(world->Environment().value(QStringLiteral("DBUS_SESSION_BUS_ADDRESS")),
                                      session)
            .call(QDBusMessage::createMethodCall(
                QStringLiteral("org.a11y.Bus"), QStringLiteral("/org/a11y/bus"),
                QStringLiteral("org.a11y.Bus"), QStringLiteral("GetAddress")));
    QDBusConnection::disconnectFromBus(session);
    QVERIFY2(address.type() == QDBusMessage::ReplyMessage, qPrintable(address.errorMessage()));
    bus = QDBusConnection::connectToBus(address.arguments().first().toString(),
                                        QStringLiteral("accessibility"));
    QVERIFY(bus.isConnected());
}

void TestScreenReader::ListenToStateChanges()
{
    // Programs send only events for which a client has registered.
    const QString event = QStringLiteral("Object:StateChanged");
    QCOMPARE(Call({REGISTRY, REGISTRY_PATH}, REGISTRY, QStringLiteral("RegisterEvent"), {event}).type(),
             QDBusMessage::ReplyMessage);
    QVERIFY(bus.connect(QString(), QString(), QStringLiteral("org.a11y.atspi.Event.Object"),
                        QStringLiteral("StateChanged"), this, SLOT(ReceiveStateChange(QDBusMessage))));
}

void TestScreenReader::ReceiveStateChange(const QDBusMessage& signal)
{
    stateChanges.append(signal.arguments().value(0).toString() + QLatin1Char(' ') +
                        signal.arguments().value(1).toString());
}

QDBusMessage TestScreenReader::Call(const Node& node, const QString& interface, const QString& method,
                                    const QVariantList& arguments) const
{
    QDBusMessage call = QDBusMessage::createMethodCall(node.service, node.path, interface, method);
    call.setArguments(arguments);
    return bus.call(call);
}

QString TestScreenReader::Name(const Node& node) const
{
    const QDBusMessage reply = Call(node, QStringLiteral("org.freedesktop.DBus.Properties"),
                                    QStringLiteral("Get"), {ACCESSIBLE, QStringLiteral("Name")});
    return reply.arguments().value(0).value<QDBusVariant>().variant().toString();
}

uint TestScreenReader::RoleOf(const Node& node) const
{
    return Call(node, ACCESSIBLE, QStringLiteral("GetRole")).arguments().value(0).toUInt();
}

bool TestScreenReader::Is(const Node& node, State state) const
{
    if (node.path.isEmpty()) {
        return false;
    }
    const QDBusMessage reply = Call(node, ACCESSIBLE, QStringLiteral("GetState"));
    const auto words = qdbus_cast<QList<uint>>(reply.arguments().value(0));
    return !words.isEmpty() && (words.first() >> state & 1U) != 0;
}

QList<TestScreenReader::Node> TestScreenReader::Children(const Node& node) const
{
    const QDBusMessage reply = Call(node, ACCESSIBLE, QStringLiteral("GetChildren"));
    QList<Node> children;
    if (reply.type() != QDBusMessage::ReplyMessage) {
        return children;
    }
    const auto list = reply.arguments().first().value<QDBusArgument>();
    list.beginArray();
    while (!list.atEnd()) {
        Node child;
        QDBusObjectPath path;
        list.beginStructure();
        list >> child.service >> path;
        list.endStructure();
        child.path = path.path();
        children.append(child);
    }
    list.endArray();
    return children;
}

TestScreenReader::Node TestScreenReader::Search(const Node& top, Role role, const QString& name) const
{
    for (const Node& child : Children(top)) {
        if (!Is(child, SHOWING) && RoleOf(child) != APPLICATION) {
            continue;
        }
        if (RoleOf(child) == role && Name(child) == name) {
            return child;
        }
        const Node found = Search(child, role, name);
        if (!found.path.isEmpty()) {
            return found;
        }
    }
    return {};
}

TestScreenReader::Node TestScreenReader::Find(Role role, const char* name) const
{
    return Search({REGISTRY, ROOT}, role, QString::fromUtf8(name));
}

bool TestScreenReader::Shows(Role role, const char* name) const
{
    return !Find(role, name).path.isEmpty();
}

bool TestScreenReader::Press(Role role, const char* name) const
{
    const Node node = Find(role, name);
    return !node.path.isEmpty() &&
           Call(node, ACTION, QStringLiteral("GetName"), {0}).arguments().value(0) ==
               QVariant(QStringLiteral("Press")) &&
           Call(node, ACTION, QStringLiteral("DoAction"), {0}).arguments().value(0).toBool();
}

QString TestScreenReader::Tree(const Node& top, int depth) const
{
    QString lines;
    for (const Node& child : Children(top)) {
        lines += QString(2 * depth, QLatin1Char(' ')) + QString::number(RoleOf(child)) + QLatin1Char(' ') +
                 Name(child) + (Is(child, SHOWING) ? QString() : QStringLiteral(" (hidden)")) +
                 QLatin1Char('\n') + Tree(child, depth + 1);
    }
    return lines;
}

void TestScreenReader::programIsUsableWithTheActionPressOnly()
{
    DesktopWorld::Options options;
    options.screenReader = true;
    options.agreed = false;
    Begin(options);
    ConnectToAccessibilityBus();

    VERIFY_ACCESSIBLE(Shows(CHECK_BOX, "同意条款"));
    ListenToStateChanges();
    QVERIFY(!Is(Find(CHECK_BOX, "同意条款"), CHECKED));
    QVERIFY(!Is(Find(PUSH_BUTTON, "开始"), SENSITIVE));
    QVERIFY(Press(CHECK_BOX, "同意条款"));
    VERIFY_ACCESSIBLE(Is(Find(CHECK_BOX, "同意条款"), CHECKED) && Is(Find(PUSH_BUTTON, "开始"), SENSITIVE));
    VERIFY_ACCESSIBLE(stateChanges.contains(QStringLiteral("checked 1")));
    QVERIFY(Press(PUSH_BUTTON, "开始"));

    VERIFY_ACCESSIBLE(Is(Find(LIST_ITEM, "多屏协同"), SELECTED));
    QVERIFY(Press(PUSH_BUTTON, "菜单"));
    VERIFY_ACCESSIBLE(Shows(MENU_ITEM, "设置"));
    QVERIFY(Press(MENU_ITEM, "设置"));
    VERIFY_ACCESSIBLE(Shows(PANEL, "设置") && !Shows(POPUP_MENU, "菜单"));
    QVERIFY(!Is(Find(LIST_ITEM, "多屏协同"), SELECTED));
    // The program translates Qt's dialog in every locale, but Debian 11 has no Chinese translation.
    const bool isTranslated = QFile::exists(QLibraryInfo::location(QLibraryInfo::TranslationsPath) +
                                            QStringLiteral("/qtbase_zh_CN.qm"));
    QVERIFY(Press(PUSH_BUTTON, "修改"));
    VERIFY_ACCESSIBLE(Press(PUSH_BUTTON, isTranslated ? "取消" : "Cancel"));
    VERIFY_ACCESSIBLE(world->FolderDialog().id == 0);
    QVERIFY(Press(LIST_ITEM, "多屏协同"));
    VERIFY_ACCESSIBLE(Shows(PUSH_BUTTON, "开始投屏"));

    QVERIFY(Press(PUSH_BUTTON, "关闭"));
    VERIFY_ACCESSIBLE(Shows(DIALOG, "维乐助手") && Shows(LABEL, "确认要退出维乐助手？"));
    QVERIFY(Press(PUSH_BUTTON, "退出"));
    QVERIFY(world->WaitForDaemonEnd());
    QCOMPARE(world->AssistantStatus(), 0);
}

QTEST_GUILESS_MAIN(TestScreenReader)
#include "TestScreenReader.moc"
