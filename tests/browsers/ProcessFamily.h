#pragma once

#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>

#include <sys/types.h>
#include <vector>

/// A program and all that it starts. Everything of it ends with the object, whatever has left its session.
class ProcessFamily
{
public:
    ProcessFamily() = default;
    ~ProcessFamily() { kill(); }
    Q_DISABLE_COPY_MOVE(ProcessFamily)

    /// Starts the program; what it prints is appended to the file `log`.
    bool start(const QString &program, const QStringList &arguments, QProcessEnvironment environment,
               const QString &log);

    /// Whether the first process lives.
    bool runs() const;

    qint64 firstProcess() const { return m_first.processId(); }

    /// All living processes of it.
    std::vector<pid_t> members() const;

    /// Lets it come to its end by itself; whether the first process has.
    bool waitForEnd(int milliseconds) { return m_first.waitForFinished(milliseconds); }

    /// Asks the first process to end (SIGTERM) and gives all time to; whether none is left.
    bool end(int milliseconds = 10'000);

    /// SIGKILL to every one, until none is left.
    void kill();

private:
    QProcess m_first;
    QByteArray m_mark; ///< an environment entry by which its processes are known
    pid_t m_session = 0;
};
