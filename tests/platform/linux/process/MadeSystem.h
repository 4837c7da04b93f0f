#pragma once

#include "ApplicationTable.h"
#include "NoMoreFiles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

/// The bytes of an environment that holds these variables.
inline QByteArray environmentOf(const QList<QByteArray> &variables)
{
    return variables.join('\0') + '\0';
}

/// A system of plain files in a temporary folder: programs, desktop entries and a /proc.
class MadeSystem
{
public:
    MadeSystem()
    {
        QDir(path()).mkpath(QStringLiteral("proc"));
        QDir(path()).mkpath(QStringLiteral("data/applications"));
        QDir(path()).mkpath(QStringLiteral("bin"));
    }

    QString path(const QString &below = {}) const
    {
        return QFileInfo(m_folder.path()).canonicalFilePath() + u'/' + below;
    }

    void write(const QString &below, const QByteArray &bytes) const
    {
        const auto file = path(below);
        QDir().mkpath(QFileInfo(file).path());
        QFile out(file);
        QVERIFY2(out.open(QIODevice::WriteOnly), qPrintable(file));
        out.write(bytes);
    }

    /// A program in bin/ (or wherever `below` says); gives its path.
    QString addProgram(const QString &below) const
    {
        write(below, "program");
        chmod(QFile::encodeName(path(below)).constData(), 0755);
        return path(below);
    }

    void addEntry(const QString &below, const QByteArray &keys) const
    {
        write(QStringLiteral("data/applications/") + below, "[Desktop Entry]\nType=Application\n" + keys);
    }

    struct Process
    {
        qint32 id = 0;
        QString executable;
        qint32 parent = 1;
        QStringList arguments = {};
        int terminal = 0;
        char state = 'S';
        QByteArray cgroup = "0::/\n";
        QByteArray environment = {};
        quint64 startTime = 0; ///< 0: ten times the number
        quint64 flags = 0;
        QByteArray command = {}; ///< empty: the executable's name
    };
    void addProcess(const Process &process) const
    {
        const auto folder = QStringLiteral("proc/%1/").arg(process.id);
        const auto name =
            process.command.isEmpty() ? baseName(process.executable).left(15).toUtf8() : process.command;
        const auto start = process.startTime ? process.startTime : quint64(process.id) * 10;
        write(folder + QStringLiteral("stat"),
              QByteArray::number(process.id) + " (" + name + ") " + process.state + ' ' +
                  QByteArray::number(process.parent) + " 1 1 " + QByteArray::number(process.terminal) +
                  " -1 " + QByteArray::number(process.flags) + " 0 0 0 0 0 0 0 0 20 0 1 0 " +
                  QByteArray::number(start) + " 1000 100 0\n");
        QByteArray commandLine = process.executable.toUtf8() + '\0';
        for (const auto &argument : process.arguments)
            commandLine += argument.toUtf8() + '\0';
        write(folder + QStringLiteral("cmdline"), commandLine);
        write(folder + QStringLiteral("cgroup"), process.cgroup);
        write(folder + QStringLiteral("environ"), process.environment);
        write(folder + QStringLiteral("status"),
              "Name:\tx\nUid:\t" + ownUser() + '\t' + ownUser() + "\t0\t0\n");
        QFile::remove(path(folder + QStringLiteral("exe")));
        if (!process.executable.isEmpty()) // as of one that guards itself
            QFile::link(process.executable, path(folder + QStringLiteral("exe")));
    }
    void removeProcess(qint32 id) const { QDir(path(QStringLiteral("proc/%1").arg(id))).removeRecursively(); }

    ApplicationPlaces places(const QString &locale = {}) const
    {
        ApplicationPlaces places;
        places.processRoot = path(QStringLiteral("proc"));
        places.desktop = {{path(QStringLiteral("data"))}, {path(QStringLiteral("bin"))}, locale};
        return places;
    }

private:
    static QByteArray ownUser() { return QByteArray::number(geteuid()); }

    QTemporaryDir m_folder;
};
