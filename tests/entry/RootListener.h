#pragma once

#include <QByteArray>
#include <QList>
#include <memory>

/// Receives the client messages to the root window, as a window manager does, over a separate X connection.
class RootListener
{
public:
    /// A received client message.
    struct Message
    {
        bool sentByAClient;
        unsigned long window;
        QByteArray type;
        int format;
        QList<long> data;
    };

    /// Connects to the display of the variable DISPLAY. Ends the program on failure.
    RootListener();
    ~RootListener();
    RootListener(const RootListener&) = delete;
    RootListener& operator=(const RootListener&) = delete;

    /// Returns the messages since the last call.
    QList<Message> Take();

private:
    struct Connection;
    std::unique_ptr<Connection> x;
};
