#pragma once

#include <QtGlobal>
#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

/// Removes root's capabilities from this thread as long as the object exists, so that file permissions also
/// apply if root runs the tests.
class UnprivilegedUser
{
public:
    UnprivilegedUser()
    {
        __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
        if (syscall(SYS_capget, &header, before) != 0) {
            qFatal("the privileges of this thread cannot be read");
        }
        __user_cap_data_struct none[_LINUX_CAPABILITY_U32S_3];
        for (unsigned int i = 0; i < _LINUX_CAPABILITY_U32S_3; ++i) {
            none[i] = before[i];
            none[i].effective = 0;
        }
        Set(none);
    }
    ~UnprivilegedUser() { Set(before); }
    UnprivilegedUser(const UnprivilegedUser&) = delete;
    UnprivilegedUser& operator=(const UnprivilegedUser&) = delete;

    /// Removes the capabilities permanently, for a thread that ends soon. access() considers root's permitted
    /// capabilities, not only the effective ones.
    static void Stay()
    {
        __user_cap_data_struct none[_LINUX_CAPABILITY_U32S_3]{};
        Set(none);
    }

private:
    static void Set(const __user_cap_data_struct* data)
    {
        __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
        if (syscall(SYS_capset, &header, data) != 0) {
            qFatal("the privileges of this thread cannot be set");
        }
    }

    __user_cap_data_struct before[_LINUX_CAPABILITY_U32S_3]{};
};
