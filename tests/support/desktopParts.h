#pragma once

#include "patience.h"

#include <QDeadlineTimer>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRegularExpression>

#include <csignal>
#include <initializer_list>
#include <sys/prctl.h>

// What every desktop of a test's own needs, whatever else there is on it.

/// Lets the program end with the test, also where the test itself is killed.
inline void bindToTest(QProcess &process)
{
    process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
}

/// The first line that a program prints; empty when none comes.
inline QByteArray firstLine(QProcess &process)
{
    while (!process.canReadLine() && process.waitForReadyRead(patience)) {
    }
    return process.readLine().trimmed();
}

/// Runs a tool of the desktop to its end and gives what it printed, without the last line end.
inline QString outputOf(const QProcessEnvironment &environment, const QString &program,
                        const QStringList &arguments, int milliseconds = patience)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    process.waitForFinished(milliseconds);
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

/// Waits until the window manager of this desktop takes in every window that opens from now on; false when it
/// never does. Leaves the desktop with one workspace more.
///
/// It is not enough that openbox has marked the screen as its own, nor that it runs what it is to run at its
/// start: events that reach it before its main loop lie in a queue of its own, on which that loop does not
/// look before the next event comes. A window that opens then stays unmanaged and unseen for as long as
/// nothing else happens on the desktop. An answer to a request shows that the loop runs and the queue is
/// empty. The request may lie in that queue itself, so it is made again.
inline bool waitForManager(const QProcessEnvironment &environment, QProcess &manager)
{
    const auto workspaces = [&] {
        return outputOf(environment, QStringLiteral("xdotool"), {QStringLiteral("get_num_desktops")}).toInt();
    };
    const QDeadlineTimer deadline(patience);
    int there = 0;
    while (!deadline.hasExpired() && manager.state() != QProcess::NotRunning) {
        if (there == 0)
            there = workspaces();
        if (there > 0) {
            const int wanted = there + 1; // so many are there only because of the request
            outputOf(environment, QStringLiteral("xdotool"),
                     {QStringLiteral("set_num_desktops"), QString::number(wanted)});
            if (workspaces() == wanted)
                return true;
        }
        manager.waitForFinished(20);
    }
    return false;
}

/// What the desktop looks like, for a test that failed: the marks of the window manager, the windows, and
/// which of the programs run.
inline QString desktopReport(const QProcessEnvironment &environment,
                             const std::initializer_list<const QProcess *> &programs)
{
    constexpr int milliseconds = 3000; // the X server may have been stopped
    auto report = outputOf(environment, QStringLiteral("xprop"),
                           {QStringLiteral("-root"), QStringLiteral("_NET_SUPPORTING_WM_CHECK"),
                            QStringLiteral("_NET_CLIENT_LIST"), QStringLiteral("_NET_ACTIVE_WINDOW")},
                           milliseconds);
    const auto windows = outputOf(environment, QStringLiteral("xwininfo"),
                                  {QStringLiteral("-root"), QStringLiteral("-tree")}, milliseconds);
    report += u'\n' + windows.split(u'\n').filter(QRegularExpression(QStringLiteral("0x.*\""))).join(u'\n');
    for (const auto *program : programs) {
        if (program)
            report +=
                QStringLiteral("\n%1: %2")
                    .arg(program->program(), program->state() == QProcess::NotRunning
                                                 ? QStringLiteral("ended with %1").arg(program->exitCode())
                                                 : QStringLiteral("process %1").arg(program->processId()));
    }
    return report;
}
