#pragma once

#include <QByteArray>
#include <QLatin1String>

/// What a supervised program reports of itself; the values travel as char through ConnClient.
enum AppStatus : char
{
    APP_STATUS_INIT = 0,
    APP_STATUS_RUN = 1,
    APP_STATUS_STOP = 2,
};

/// The words of the status channel, shared by both of its ends.
// With their lengths: clang does not take strlen for a constant.
namespace StatusText {
constexpr QLatin1String KEY("status", 6);
constexpr QLatin1String INIT("init", 4);
constexpr QLatin1String RUN("run", 3);
constexpr QLatin1String STOP("stop", 4);
} // namespace StatusText

/// One message of the status channel: a compact JSON object (RFC 8259) in UTF-8 with the one member "status",
/// and without any framing. The receiver takes whatever one read gives as one whole message; what is lost
/// that way the next repeat puts right.
class AppMessage
{
public:
    /// Encodes at once. A status outside the enumeration gives "{}".
    explicit AppMessage(AppStatus status);

    /// The message's bytes.
    const QByteArray& GetAppMsg() const { return appMsg; }

private:
    QByteArray appMsg;
};
