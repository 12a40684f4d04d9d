#pragma once

#include <cstring>
#include <string>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

/// A client of a local server in this process. It can make the server run out of file descriptors. Construct
/// it before the server.
class FewDescriptors
{
public:
    FewDescriptors() : client(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        getrlimit(RLIMIT_NOFILE, &before);
    }
    ~FewDescriptors()
    {
        End();
        close(client);
    }
    FewDescriptors(const FewDescriptors&) = delete;
    FewDescriptors& operator=(const FewDescriptors&) = delete;

    /// Prevents this process from opening any descriptor until End(). The descriptor of a closed server
    /// cannot be reused either.
    void Begin() const
    {
        rlimit few = before;
        few.rlim_cur = static_cast<rlim_t>(client) + 1;
        setrlimit(RLIMIT_NOFILE, &few);
    }
    void End() const { setrlimit(RLIMIT_NOFILE, &before); }

    /// Connects to the local socket at `path`. Returns false on failure.
    bool Connect(const std::string& path) const
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path.c_str(), sizeof(address.sun_path) - 1);
        return connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
    }

private:
    int client;
    rlimit before{};
};
