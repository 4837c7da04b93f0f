#pragma once

#include "desktopParts.h"
#include "freeDisplay.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <map>
#include <memory>
#include <sys/wait.h>

/// An X server of the test's own, with or without a window manager, and decoys on it. Everything it started
/// ends with it.
class VirtualDesktop
{
public:
    enum class Manager { None, Openbox };

    explicit VirtualDesktop(Manager manager)
    {
        m_environment = QProcessEnvironment::systemEnvironment();
        m_environment.insert(QStringLiteral("HOME"), path(QStringLiteral("home")));
        m_environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
        QDir(path()).mkpath(QStringLiteral("home"));
        QDir(path()).mkpath(QStringLiteral("data/applications"));
        m_server = launch(QStringLiteral("Xvfb"),
                          {freeDisplay(), QStringLiteral("-displayfd"), QStringLiteral("1"),
                           QStringLiteral("-screen"), QStringLiteral("0"), QStringLiteral("800x600x24"),
                           QStringLiteral("-ac"), QStringLiteral("-nolisten"), QStringLiteral("tcp"),
                           QStringLiteral("-nolisten"), QStringLiteral("local"), QStringLiteral("-noreset")});
        m_display = u':' + QString::fromLatin1(firstLine(*m_server));
        m_environment.insert(QStringLiteral("DISPLAY"), m_display);
        m_works = m_display.size() > 1 && (manager == Manager::None || startManager());
    }
    ~VirtualDesktop()
    {
        for (auto &[id, process] : m_programs)
            stop(*process);
        if (m_manager)
            stop(*m_manager);
        stop(*m_server);
        if (m_display.size() > 1)
            clearDisplay(m_display);
    }

    bool works() const { return m_works; }
    /// What is to be seen on it, for a test that failed.
    QString report() const { return desktopReport(m_environment, {m_server.get(), m_manager.get()}); }
    QString display() const { return m_display; }
    QProcess &server() { return *m_server; }
    QProcess &manager() { return *m_manager; }
    /// Returns when it manages windows: one that was there before gets no focus. False where it never does.
    bool startManager()
    {
        m_manager = launch(QStringLiteral("openbox"), {});
        return waitForManager(m_environment, *m_manager);
    }

    QString path(const QString &below = {}) const
    {
        return QFileInfo(m_folder.path()).canonicalFilePath() + u'/' + below;
    }

    /// A copy of the decoy under another name; gives its path.
    QString program(const QString &name) const
    {
        const auto copy = path(name);
        if (!QFileInfo::exists(copy))
            QFile::copy(QStringLiteral(QUORVEL_DECOY), copy);
        return copy;
    }
    void addEntry(const QString &id, const QByteArray &keys) const
    {
        QFile file(path(QStringLiteral("data/applications/%1.desktop").arg(id)));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[Desktop Entry]\nType=Application\n" + keys);
    }

    /// Starts a decoy and waits until its windows are there; the test fails where they never are. `prefix` is
    /// put before the program.
    qint32 start(const QString &name, const QStringList &options = {}, const QStringList &prefix = {})
    {
        auto words = prefix + QStringList(program(name)) + options;
        const auto first = words.takeFirst();
        auto process = launch(first, words);
        const auto said = firstLine(*process);
        const auto id = said.startsWith("ready ") ? said.mid(6).toInt() : 0;
        if (id == 0) {
            const auto message = QStringLiteral("%1 says \"%2\" instead of being ready\n%3\n%4");
            const auto errors = QString::fromUtf8(process->readAllStandardError());
            QTest::qFail(qPrintable(message.arg(name, QString::fromUtf8(said), errors, report())), __FILE__,
                         __LINE__);
        }
        m_programs[id] = std::move(process);
        return id;
    }
    bool runs(qint32 id)
    {
        return !m_programs.at(id)->waitForFinished(0) && m_programs.at(id)->state() != QProcess::NotRunning;
    }
    void end(qint32 id)
    {
        stop(*m_programs.at(id));
        m_programs.erase(id);
    }

    void run(const QString &command, const QStringList &words) const
    {
        QProcess process;
        process.setProcessEnvironment(m_environment);
        process.start(command, words);
        QVERIFY2(process.waitForFinished(patience), qPrintable(command));
    }

private:
    std::unique_ptr<QProcess> launch(const QString &command, const QStringList &words) const
    {
        auto process = std::make_unique<QProcess>();
        process->setProcessEnvironment(m_environment);
        bindToTest(*process);
        process->start(command, words);
        process->waitForStarted();
        return process;
    }
    static void stop(QProcess &process)
    {
        process.kill();
        process.waitForFinished(patience);
    }

    QTemporaryDir m_folder;
    QProcessEnvironment m_environment;
    QString m_display;
    bool m_works = false;
    std::unique_ptr<QProcess> m_server;
    std::unique_ptr<QProcess> m_manager;
    std::map<qint32, std::unique_ptr<QProcess>> m_programs;
};
