#pragma once

/// Raises windows by asking the window manager, over an X connection of its own.
class RawxWindowOpt
{
public:
    RawxWindowOpt() = delete;

    /// Sends `windowId` (an X window) as a _NET_ACTIVE_WINDOW client message to the root window, as a pager
    /// does (EWMH). Whether the manager obeys is not known. A missing or dead display is logged.
    static void ActivexWindow(int windowId);
};
