#include "statuschannel/AppMessage.h"

#include <QJsonDocument>
#include <QJsonObject>

AppMessage::AppMessage(AppStatus status)
{
    QJsonObject message;
    switch (status) {
    case APP_STATUS_INIT:
        message.insert(StatusText::KEY, StatusText::INIT);
        break;
    case APP_STATUS_RUN:
        message.insert(StatusText::KEY, StatusText::RUN);
        break;
    case APP_STATUS_STOP:
        message.insert(StatusText::KEY, StatusText::STOP);
        break;
    default:
        break;
    }
    appMsg = QJsonDocument(message).toJson(QJsonDocument::Compact);
}
