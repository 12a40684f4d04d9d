#pragma once

#include <QByteArray>
#include <QLatin1String>

/// The status of a supervised program.
enum AppStatus : char
{
    APP_STATUS_INIT = 0,
    APP_STATUS_RUN = 1,
    APP_STATUS_STOP = 2,
};

/// The texts of the messages, for client and server.
// The lengths are written out, because clang does not accept strlen() in a constant expression.
namespace StatusText {
constexpr QLatin1String KEY("status", 6);
constexpr QLatin1String INIT("init", 4);
constexpr QLatin1String RUN("run", 3);
constexpr QLatin1String STOP("stop", 4);
} // namespace StatusText

/// A message of the status channel. It is a compact JSON object (RFC 8259) in UTF-8 with one member,
/// "status". No delimiter separates messages: the receiver parses the bytes of one read as one message.
class AppMessage
{
public:
    /// Encodes the message. A status outside the enumeration gives "{}".
    explicit AppMessage(AppStatus status);

    /// Returns the bytes of the message.
    const QByteArray& GetAppMsg() const { return appMsg; }

private:
    QByteArray appMsg;
};
