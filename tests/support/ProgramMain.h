#pragma once

#include <QApplication>
#include <QTest>

#include "entry/StartEnvironment.h"
#include "shell/Typeface.h"

/// Runs a test with Qt set up as in the program, so that its windows have the program's appearance.
template <typename Test>
int RunAsProgram(int argc, char** argv)
{
    const StartEnvironment environment;
    const QApplication application(argc, argv);
    Typeface::UseEverywhere();
    Test test;
    return QTest::qExec(&test, argc, argv);
}

#define PROGRAM_TEST_MAIN(TestClass)                                                                         \
    int main(int argc, char** argv)                                                                          \
    {                                                                                                        \
        return RunAsProgram<TestClass>(argc, argv);                                                          \
    }
