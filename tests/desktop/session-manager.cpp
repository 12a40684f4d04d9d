// A session manager (XSMP) for one desktop. Prints its network id and the clients that register, and ends the
// session on request.
//
//   stdin: "end"         asks all clients to save, with interaction allowed, and then to exit
//          "end quietly" the same without interaction
//   stdout: the network id; then "registered", "saved" and "closed", one line for each client

#include <X11/ICE/ICElib.h>
#include <X11/ICE/ICEutil.h>
#include <X11/SM/SMlib.h>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <poll.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace {
struct Client
{
    SmsConn connection;
    bool saving;
};

std::vector<Client> clients;
std::vector<IceConn> connections;
bool ending = false;

void Print(const char* what)
{
    std::printf("%s\n", what);
    std::fflush(stdout);
}

Client* Find(SmsConn connection)
{
    for (Client& client : clients) {
        if (client.connection == connection) {
            return &client;
        }
    }
    return nullptr;
}

void DieWhenAllHaveSaved()
{
    for (const Client& client : clients) {
        if (client.saving) {
            return;
        }
    }
    for (const Client& client : clients) {
        SmsDie(client.connection);
    }
}

Status Register(SmsConn connection, SmPointer, char* previousId)
{
    if (previousId != nullptr) {
        std::free(previousId);
        // The id belongs to an earlier session. The client registers again after this failure.
        return 0;
    }
    char* id = SmsGenerateClientID(connection);
    SmsRegisterClientReply(connection, id);
    std::free(id);
    // The protocol requires that a new client saves its state immediately.
    SmsSaveYourself(connection, SmSaveLocal, False, SmInteractStyleNone, False);
    clients.push_back({connection, true});
    Print("registered");
    return 1;
}

void InteractRequest(SmsConn connection, SmPointer, int)
{
    SmsInteract(connection);
}

void InteractDone(SmsConn, SmPointer, Bool) {}

void SaveYourselfRequest(SmsConn, SmPointer, int, Bool, int, Bool, Bool) {}

void SaveYourselfPhase2Request(SmsConn connection, SmPointer)
{
    SmsSaveYourselfPhase2(connection);
}

void SaveYourselfDone(SmsConn connection, SmPointer, Bool)
{
    if (Client* client = Find(connection)) {
        client->saving = false;
    }
    if (ending) {
        Print("saved");
        DieWhenAllHaveSaved();
    } else {
        SmsSaveComplete(connection);
    }
}

void Close(SmsConn connection, SmPointer, int count, char** reasons)
{
    SmFreeReasons(count, reasons);
    IceConn ice = SmsGetIceConnection(connection);
    SmsCleanUp(connection);
    for (size_t i = 0; i < clients.size(); ++i) {
        if (clients[i].connection == connection) {
            clients.erase(clients.begin() + static_cast<std::ptrdiff_t>(i));
            break;
        }
    }
    IceSetShutdownNegotiation(ice, False);
    IceCloseConnection(ice);
    Print("closed");
}

void SetProperties(SmsConn, SmPointer, int count, SmProp** properties)
{
    for (int i = 0; i < count; ++i) {
        SmFreeProperty(properties[i]);
    }
    std::free(properties);
}

void DeleteProperties(SmsConn, SmPointer, int count, char** names)
{
    for (int i = 0; i < count; ++i) {
        std::free(names[i]);
    }
    std::free(names);
}

void GetProperties(SmsConn connection, SmPointer)
{
    SmsReturnProperties(connection, 0, nullptr);
}

Status NewClient(SmsConn, SmPointer, unsigned long* mask, SmsCallbacks* callbacks, char**)
{
    *mask = SmsRegisterClientProcMask | SmsInteractRequestProcMask | SmsInteractDoneProcMask |
            SmsSaveYourselfRequestProcMask | SmsSaveYourselfP2RequestProcMask | SmsSaveYourselfDoneProcMask |
            SmsCloseConnectionProcMask | SmsSetPropertiesProcMask | SmsDeletePropertiesProcMask |
            SmsGetPropertiesProcMask;
    callbacks->register_client.callback = Register;
    callbacks->interact_request.callback = InteractRequest;
    callbacks->interact_done.callback = InteractDone;
    callbacks->save_yourself_request.callback = SaveYourselfRequest;
    callbacks->save_yourself_phase2_request.callback = SaveYourselfPhase2Request;
    callbacks->save_yourself_done.callback = SaveYourselfDone;
    callbacks->close_connection.callback = Close;
    callbacks->set_properties.callback = SetProperties;
    callbacks->delete_properties.callback = DeleteProperties;
    callbacks->get_properties.callback = GetProperties;
    return 1;
}

void EndSession(bool interaction)
{
    ending = true;
    for (Client& client : clients) {
        client.saving = true;
        SmsSaveYourself(client.connection, SmSaveBoth, True,
                        interaction ? SmInteractStyleAny : SmInteractStyleNone, False);
    }
}

void Watch(IceConn connection, IcePointer, Bool opening, IcePointer*)
{
    if (opening != False) {
        connections.push_back(connection);
        return;
    }
    for (size_t i = 0; i < connections.size(); ++i) {
        if (connections[i] == connection) {
            connections.erase(connections.begin() + static_cast<std::ptrdiff_t>(i));
            break;
        }
    }
}

/// Accepts every local client, because only one test uses the session.
Bool AllowHost(char*)
{
    return True;
}

void IgnoreBrokenConnection(IceConn) {}

void Serve(const std::vector<IceListenObj>& listeners)
{
    for (;;) {
        std::vector<pollfd> polled{{STDIN_FILENO, POLLIN, 0}};
        for (const IceListenObj listener : listeners) {
            polled.push_back({IceGetListenConnectionNumber(listener), POLLIN, 0});
        }
        const std::vector<IceConn> known = connections;
        for (const IceConn connection : known) {
            polled.push_back({IceConnectionNumber(connection), POLLIN, 0});
        }
        if (poll(polled.data(), polled.size(), -1) < 0) {
            return;
        }
        if (polled[0].revents != 0) {
            std::string line;
            if (!std::getline(std::cin, line)) {
                return;
            }
            EndSession(line == "end");
        }
        for (size_t i = 0; i < listeners.size(); ++i) {
            if (polled[i + 1].revents != 0) {
                IceAcceptStatus status = IceAcceptSuccess;
                IceAcceptConnection(listeners[i], &status);
            }
        }
        for (size_t i = 0; i < known.size(); ++i) {
            if (polled[i + 1 + listeners.size()].revents != 0) {
                IceProcessMessages(known[i], nullptr, nullptr);
            }
        }
    }
}
} // namespace

int main()
{
    std::array<char, 256> error{};
    char vendor[] = "velodesk";
    char release[] = "1";
    if (SmsInitialize(vendor, release, NewClient, nullptr, AllowHost, static_cast<int>(error.size()),
                      error.data()) == 0) {
        std::fprintf(stderr, "%s\n", error.data());
        return 1;
    }
    IceSetIOErrorHandler(IgnoreBrokenConnection);
    IceAddConnectionWatch(Watch, nullptr);
    int count = 0;
    IceListenObj* listening = nullptr;
    if (IceListenForConnections(&count, &listening, static_cast<int>(error.size()), error.data()) == 0) {
        std::fprintf(stderr, "%s\n", error.data());
        return 1;
    }
    std::vector<IceListenObj> listeners(listening, listening + count);
    for (const IceListenObj listener : listeners) {
        IceSetHostBasedAuthProc(listener, AllowHost);
    }
    char* ids = IceComposeNetworkIdList(count, listening);
    Print(ids);
    std::free(ids);
    Serve(listeners);
    IceFreeListenObjs(count, listening);
    return 0;
}
