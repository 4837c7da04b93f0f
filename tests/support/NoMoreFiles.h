#pragma once

#include <QDebug>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

/// As long as it lives this program cannot open a file, as if its table of open files were full.
class NoMoreFiles
{
public:
    NoMoreFiles()
    {
        // A sanitizer opens a pipe the first time that it looks at a type; what the program logs is one.
        QString text;
        QDebug(&text) << text;
        getrlimit(RLIMIT_NOFILE, &m_before);
        const int next = fcntl(0, F_DUPFD_CLOEXEC, 0); // the lowest number that is free
        close(next);
        auto limit = m_before;
        limit.rlim_cur = rlim_t(next);
        setrlimit(RLIMIT_NOFILE, &limit);
    }
    ~NoMoreFiles() { setrlimit(RLIMIT_NOFILE, &m_before); }
    Q_DISABLE_COPY_MOVE(NoMoreFiles)

private:
    rlimit m_before{};
};
