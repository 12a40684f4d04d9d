#pragma once

#include <QByteArray>
#include <QFile>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

/// A client of a local socket that does not use Qt and never blocks.
class Client
{
public:
    explicit Client(const QString& path) : fd(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, QFile::encodeName(path).constData(), sizeof address.sun_path);
        isConnected = connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    }
    ~Client() { close(fd); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    bool IsConnected() const { return isConnected; }
    void Send(const QByteArray& bytes) const
    {
        // Data is lost if the buffer is full or the server has closed the connection.
        (void)!send(fd, bytes.constData(), static_cast<size_t>(bytes.size()), MSG_NOSIGNAL);
    }

private:
    int fd;
    bool isConnected;
};
