#pragma once

/// Raises windows by asking the window manager, over an X connection of its own.
class RawxWindowOpt
{
public:
    RawxWindowOpt() = delete;

    /// Asks the window manager to activate the X window `windowId`: sends a _NET_ACTIVE_WINDOW client message
    /// to the root window, as a pager does (EWMH). The window manager may ignore it. If the X server cannot
    /// be reached, only logs an error. Any thread.
    static void ActivexWindow(int windowId);
};
