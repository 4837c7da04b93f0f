#include "ProcessFamily.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QUuid>

#include <csignal>
#include <sys/prctl.h>
#include <thread>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

bool ProcessFamily::start(const QString &program, const QStringList &arguments,
                          QProcessEnvironment environment, const QString &log)
{
    kill();
    const auto value = QUuid::createUuid().toString(QUuid::WithoutBraces);
    environment.insert(u"QUORVEL_TEST_FAMILY"_s, value);
    m_mark = "QUORVEL_TEST_FAMILY=" + value.toLatin1();
    m_first.setProcessEnvironment(environment);
    m_first.setStandardInputFile(QProcess::nullDevice());
    m_first.setStandardOutputFile(log, QIODevice::Append);
    m_first.setStandardErrorFile(log, QIODevice::Append);
    m_first.setChildProcessModifier([] {
        ::setsid();
        ::prctl(PR_SET_PDEATHSIG, SIGKILL); // also where the test itself is killed
    });
    m_first.start(program, arguments);
    if (!m_first.waitForStarted())
        return false;
    m_session = pid_t(m_first.processId());
    return true;
}

bool ProcessFamily::runs() const
{
    return m_session != 0 && m_first.state() != QProcess::NotRunning;
}

std::vector<pid_t> ProcessFamily::members() const
{
    std::vector<pid_t> found;
    if (m_session == 0)
        return found;
    for (const auto &name : QDir(u"/proc"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const auto id = pid_t(name.toInt());
        if (id <= 0)
            continue;
        // After the name in brackets: state, parent, group, session. Some programs overwrite their
        // environment, others leave the session; none seen does both.
        const auto stat = contents(u"/proc/%1/stat"_s.arg(id));
        const auto fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
        if (fields.size() < 4 || fields.at(0) == "Z" || fields.at(0) == "X")
            continue;
        if (fields.at(3).toInt() == m_session || contents(u"/proc/%1/environ"_s.arg(id)).contains(m_mark))
            found.push_back(id);
    }
    return found;
}

bool ProcessFamily::end(int milliseconds)
{
    if (m_session == 0)
        return true;
    m_first.terminate();
    const QDeadlineTimer deadline(milliseconds);
    m_first.waitForFinished(milliseconds);
    while (!members().empty()) {
        if (deadline.hasExpired())
            return false;
        std::this_thread::sleep_for(20ms);
    }
    m_session = 0;
    return true;
}

void ProcessFamily::kill()
{
    if (m_session == 0)
        return;
    for (auto left = members(); !left.empty(); left = members()) {
        for (const auto id : left)
            ::kill(id, SIGKILL);
        m_first.waitForFinished(0); // takes its end in, so that it is no zombie
        std::this_thread::sleep_for(10ms);
    }
    m_first.waitForFinished();
    m_session = 0;
}
