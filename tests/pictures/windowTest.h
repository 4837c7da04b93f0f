#pragma once

#include "PictureDisplay.h"

#include <QGuiApplication>
#include <QTest>

#include <cstdio>

/// Runs a test of the window's looks on a display of its own.
template <typename Test>
int runWindowTest(int argc, char **argv)
{
    const PictureDisplay display;
    if (!display.works()) {
        fprintf(stderr, "Xvfb does not start.\n");
        return 1;
    }
    QGuiApplication application(argc, argv);
    Test test;
    return QTest::qExec(&test, argc, argv);
}
