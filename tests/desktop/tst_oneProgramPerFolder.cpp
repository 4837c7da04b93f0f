// The whole program, started twice over one data folder: only one of them may write it.
#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <map>

using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 30000; // milliseconds; only a start that hangs takes as long

/// What would change with any write: each file's bytes and the moment of its last change.
using Snapshot = std::map<QString, std::pair<QByteArray, QDateTime>>;

/// A started program, ended with the object.
struct Program : QProcess
{
    ~Program() override
    {
        kill();
        waitForFinished();
    }
};

} // namespace

class TestOneProgramPerFolder : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;

    QString path(const QString &name) const { return m_folder->filePath(name); }

    /// Starts the program in a login of its own; one without a screen, so that nothing waits for a click.
    std::unique_ptr<Program> start(const QString &login) const
    {
        QDir().mkpath(path(login));
        QFile::setPermissions(path(login), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        auto environment = QProcessEnvironment::systemEnvironment();
        for (const auto &name : {u"DISPLAY"_s, u"WAYLAND_DISPLAY"_s, u"DBUS_SESSION_BUS_ADDRESS"_s})
            environment.remove(name);
        environment.insert(u"HOME"_s, path(u"home"_s));
        environment.insert(u"XDG_DATA_HOME"_s, path(u"home/data"_s));
        environment.insert(u"XDG_CONFIG_HOME"_s, path(u"home/config"_s));
        environment.insert(u"XDG_RUNTIME_DIR"_s, path(login));
        environment.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
        environment.insert(u"QT_QUICK_BACKEND"_s, u"software"_s);
        auto process = std::make_unique<Program>();
        process->setProcessEnvironment(environment);
        process->start(QString::fromLocal8Bit(QUORVEL_PROGRAM), {});
        return process;
    }
    /// Whether the program of a login hears later starts.
    bool listens(const QString &login) const
    {
        QDirIterator files(path(login), {u"socket"_s}, QDir::System | QDir::Files,
                           QDirIterator::Subdirectories);
        return files.hasNext();
    }
    Snapshot snapshot() const
    {
        Snapshot files;
        QDirIterator each(path(u"home"_s), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (each.hasNext()) {
            QFile file(each.next());
            if (file.open(QIODevice::ReadOnly))
                files[file.fileName()] = {file.readAll(), each.fileInfo().lastModified()};
        }
        return files;
    }
    QByteArray settings() const
    {
        QFile file(path(u"home/data/Quorvel/config.json"_s));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    /// Settings that any start migrates and saves.
    void writeOldSettings() const
    {
        QDir().mkpath(path(u"home/data/Quorvel"_s));
        QFile settings(path(u"home/data/Quorvel/config.json"_s));
        QVERIFY(settings.open(QIODevice::WriteOnly | QIODevice::Truncate));
        settings.write(R"({"studyMinutes":50})");
    }

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        writeOldSettings();
    }

    void aSecondStartIsHandedOverAndWritesNothing()
    {
        const auto first = start(u"desk"_s);
        QTRY_VERIFY_WITH_TIMEOUT(settings().contains("blocklistPresetVersion"), patience);
        QTRY_VERIFY_WITH_TIMEOUT(listens(u"desk"_s), patience);
        writeOldSettings();
        const auto before = snapshot();

        const auto second = start(u"desk"_s);
        QVERIFY(second->waitForFinished(patience));
        QCOMPARE(second->exitStatus(), QProcess::NormalExit);
        QCOMPARE(second->exitCode(), 0);
        QCOMPARE(snapshot(), before);
        QCOMPARE(first->state(), QProcess::Running);
    }

    void aStartFromAnotherLoginSaysSoAndWritesNothing()
    {
        const auto first = start(u"desk"_s);
        QTRY_VERIFY_WITH_TIMEOUT(settings().contains("blocklistPresetVersion"), patience);
        QTRY_VERIFY_WITH_TIMEOUT(listens(u"desk"_s), patience);
        writeOldSettings();
        const auto before = snapshot();

        const auto second = start(u"ssh"_s);
        QVERIFY(second->waitForFinished(patience));
        QCOMPARE(second->exitCode(), 1);
        const auto said = QString::fromUtf8(second->readAllStandardError());
        QVERIFY2(said.contains(u"already running in another login"), qPrintable(said));
        QVERIFY2(said.contains(u"в другом твоём сеансе"), qPrintable(said));
        QCOMPARE(snapshot(), before);
        QCOMPARE(first->state(), QProcess::Running);
    }

    void aKilledProgramIsNoObstacle()
    {
        const auto first = start(u"desk"_s);
        QTRY_VERIFY_WITH_TIMEOUT(settings().contains("blocklistPresetVersion"), patience);
        first->kill();
        QVERIFY(first->waitForFinished(patience));
        writeOldSettings();
        const auto second = start(u"ssh"_s);
        QTRY_VERIFY_WITH_TIMEOUT(listens(u"ssh"_s), patience);
        QTRY_VERIFY_WITH_TIMEOUT(settings().contains("blocklistPresetVersion"), patience);
        QCOMPARE(second->state(), QProcess::Running);
    }
};

QTEST_GUILESS_MAIN(TestOneProgramPerFolder)
#include "tst_oneProgramPerFolder.moc"
