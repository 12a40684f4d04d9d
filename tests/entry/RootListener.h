#pragma once

#include <QByteArray>
#include <QList>
#include <memory>

/// Hears what is sent to the root window, as a window manager does, over an X connection of its own.
class RootListener
{
public:
    /// A client message as it came.
    struct Message
    {
        bool sentByAClient;
        unsigned long window;
        QByteArray type;
        int format;
        QList<long> data;
    };

    /// On the display of DISPLAY. Ends the program if there is none.
    RootListener();
    ~RootListener();
    RootListener(const RootListener&) = delete;
    RootListener& operator=(const RootListener&) = delete;

    /// The messages since the last call.
    QList<Message> Take();

private:
    struct Connection;
    std::unique_ptr<Connection> x;
};
