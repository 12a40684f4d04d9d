#include "FakeCompositor.h"

#include <cstdint>
#include <systemd/sd-bus.h>

namespace {
constexpr uint64_t POLL_INTERVAL_US = 20000;

int ReadActive(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void* data,
               sd_bus_error*)
{
    return sd_bus_message_append(reply, "b", *static_cast<const int*>(data));
}

// The macros of sd-bus use designated initialisers of C.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
// With older versions of systemd, these macros leave fields uninitialised.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
const sd_bus_vtable COMPOSITING[] = {SD_BUS_VTABLE_START(0), SD_BUS_PROPERTY("active", "b", ReadActive, 0, 0),
                                     SD_BUS_VTABLE_END};
#pragma GCC diagnostic pop
#pragma GCC diagnostic pop
} // namespace

FakeCompositor::FakeCompositor(const QString& busAddress, bool active)
    : server(&FakeCompositor::Serve, this, busAddress.toStdString(), active ? 1 : 0)
{
    while (!ready) {
        std::this_thread::yield();
    }
}

FakeCompositor::~FakeCompositor()
{
    ending = true;
    server.join();
}

void FakeCompositor::Serve(const std::string& address, int active)
{
    sd_bus* bus = nullptr;
    sd_bus_new(&bus);
    sd_bus_set_address(bus, address.c_str());
    sd_bus_set_bus_client(bus, 1);
    sd_bus_start(bus);
    sd_bus_add_object_vtable(bus, nullptr, "/Compositor", "org.kde.kwin.Compositing", COMPOSITING, &active);
    sd_bus_request_name(bus, "org.kde.KWin", 0);
    ready = true;
    while (!ending) {
        if (sd_bus_process(bus, nullptr) == 0) {
            sd_bus_wait(bus, POLL_INTERVAL_US);
        }
    }
    sd_bus_flush_close_unref(bus);
}
