// A stream of bytes, cut into arbitrary reads: only a change to one of the three words counts, whatever came
// before it.

#include <QJsonDocument>
#include <QJsonObject>

#include "fuzz/FuzzSupport.h"
#include "statuschannel/ConnServer.h"

namespace {
/// The word that a read stands for; null if it is no message.
QString Word(const QByteArray& read)
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
        const QString word = Word(read);
        REQUIRE(result == (word.isNull() ? -1 : 0));
        const bool known =
            word == QLatin1String("init") || word == QLatin1String("run") || word == QLatin1String("stop");
        if (known && word != current) {
            current = word;
            ++changes;
        }
        REQUIRE(inits + runs + stops == changes);
    }
    return 0;
}
