// Input: a byte stream that is split into arbitrary reads. The server emits one signal for each change to one
// of the three statuses, and none otherwise.

#include <QJsonDocument>
#include <QJsonObject>

#include "fuzz/FuzzSupport.h"
#include "statuschannel/ConnServer.h"

namespace {
/// Returns the status in a read, or a null string if the read is no message.
QString Status(const QByteArray& read)
{
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(read, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject()) {
        return QString();
    }
    const QJsonValue value = document.object().value(QStringLiteral("status"));
    return value.isString() ? value.toString(QString()) + QLatin1String("") : QString();
}
} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    ConnServer server("unused", nullptr);
    int inits = 0;
    int runs = 0;
    int stops = 0;
    QObject::connect(&server, &ConnServer::AppInited, [&inits] { ++inits; });
    QObject::connect(&server, &ConnServer::AppRunning, [&runs] { ++runs; });
    QObject::connect(&server, &ConnServer::AppStoped, [&stops] { ++stops; });
    QString current;
    int changes = 0;
    Input input(data, size);
    while (!input.IsEmpty()) {
        const QByteArray read = QByteArray::fromStdString(input.Take(input.Byte()));
        const int result = server.ParseMsg(read);
        const QString status = Status(read);
        REQUIRE(result == (status.isNull() ? -1 : 0));
        const bool known = status == QLatin1String("init") || status == QLatin1String("run") ||
                           status == QLatin1String("stop");
        if (known && status != current) {
            current = status;
            ++changes;
        }
        REQUIRE(inits + runs + stops == changes);
    }
    return 0;
}
