#pragma once

#include <QTest>
#include <cstdlib>
#include <unistd.h>
#include <vector>

/// Starts the test again where /opt is empty and belongs to the test, and where root has no more rights than
/// anybody else. Returns in that second process only. `bytes`: the room below /opt.
inline void EnterSandbox(int argc, char** argv, const char* bytes = "16777216")
{
    constexpr char MARK[] = "VELODESK_TEST_IN_SANDBOX";
    if (std::getenv(MARK) != nullptr) {
        return;
    }
    setenv(MARK, "1", 1);
    std::vector<const char*> command{"bwrap",   "--dev-bind", "/",          "/",   "--size",           bytes,
                                     "--tmpfs", "/opt",       "--cap-drop", "ALL", "--die-with-parent"};
    command.insert(command.end(), argv, argv + argc);
    command.push_back(nullptr);
    execvp(command.front(), const_cast<char* const*>(command.data()));
    qFatal("bwrap cannot be started");
}

/// As QTEST_MAIN, in the sandbox.
#define SANDBOXED_QTEST_MAIN(TestObject)                                                                     \
    int main(int argc, char** argv)                                                                          \
    {                                                                                                        \
        EnterSandbox(argc, argv);                                                                            \
        QApplication application(argc, argv);                                                                \
        TestObject test;                                                                                     \
        return QTest::qExec(&test, argc, argv);                                                              \
    }
