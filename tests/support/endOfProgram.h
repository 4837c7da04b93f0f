#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <cstring>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

/// Runs `action` in a child process and gives what it wrote to standard error if it aborted, and no bytes (a
/// null array) if it came to its end.
template <typename Action>
QByteArray messageOfAbort(Action action)
{
    int ends[2];
    if (pipe(ends) != 0)
        qFatal("pipe: %s", strerror(errno));
    const auto child = fork();
    if (child == 0) {
        const rlimit noCore{0, 0};
        setrlimit(RLIMIT_CORE, &noCore);
        dup2(ends[1], STDERR_FILENO);
        qInstallMessageHandler(nullptr);
        action();
        _exit(0);
    }
    close(ends[1]);
    QByteArray message("");
    char chunk[512];
    for (ssize_t got = 0; (got = read(ends[0], chunk, sizeof chunk)) > 0;)
        message.append(chunk, int(got));
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    const bool aborted = WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT;
    return aborted ? message : QByteArray();
}
