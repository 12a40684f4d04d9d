#pragma once

#include <QTest>
#include <cstdlib>
#include <string>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <unistd.h>
#include <vector>

#include "support/UnprivilegedUser.h"

/// Mounts an empty file system of that size on /opt, and drops the capabilities that this needs.
inline void MountOpt(const char* bytes)
{
    const std::string size = std::string("mode=0755,size=") + bytes;
    if (mount("tmpfs", "/opt", "tmpfs", MS_NOSUID | MS_NODEV, size.c_str()) != 0) {
        qFatal("a file system cannot be mounted on /opt");
    }
    for (int right = 0; right <= CAP_LAST_CAP; ++right) {
        prctl(PR_CAPBSET_DROP, right, 0, 0, 0);
    }
    prctl(PR_CAP_AMBIENT, PR_CAP_AMBIENT_CLEAR_ALL, 0, 0, 0);
    UnprivilegedUser::Stay();
}

/// Restarts the test in a sandbox in which /opt is empty and writable and root has no additional rights.
/// Returns only in the restarted process. `bytes`: the size of /opt.
inline void EnterSandbox(int argc, char** argv, const char* bytes = "16777216")
{
    constexpr char MARK[] = "VELODESK_TEST_IN_SANDBOX";
    if (const char* mark = std::getenv(MARK)) {
        if (std::string(mark) == "empty") {
            MountOpt(bytes);
            // Programs that the test starts inherit the variable and are already in the sandbox.
            setenv(MARK, "ready", 1);
        }
        return;
    }
    setenv(MARK, "empty", 1);
    // Older versions of bubblewrap cannot limit the size of a file system, so the restarted process mounts
    // it.
    std::vector<const char*> command{"bwrap",
                                     "--dev-bind",
                                     "/",
                                     "/",
                                     "--tmpfs",
                                     "/opt",
                                     "--cap-drop",
                                     "ALL",
                                     "--cap-add",
                                     "CAP_SYS_ADMIN",
                                     "--cap-add",
                                     "CAP_SETPCAP",
                                     "--die-with-parent"};
    command.insert(command.end(), argv, argv + argc);
    command.push_back(nullptr);
    execvp(command.front(), const_cast<char* const*>(command.data()));
    qFatal("bwrap cannot be started");
}

/// Defines main() like QTEST_MAIN, but runs the test in the sandbox.
#define SANDBOXED_QTEST_MAIN(TestObject)                                                                     \
    int main(int argc, char** argv)                                                                          \
    {                                                                                                        \
        EnterSandbox(argc, argv);                                                                            \
        QApplication application(argc, argv);                                                                \
        TestObject test;                                                                                     \
        return QTest::qExec(&test, argc, argv);                                                              \
    }
