#include "MadeSystem.h"
#include "displayName.h"
#include "suite.h"

using namespace Qt::StringLiterals;

namespace {

/// "ID name|desktop id|executable: other processes", one for each application.
QStringList summary(ApplicationTable &table)
{
    QStringList lines;
    for (const auto &group : table.groups()) {
        const auto &application = group.application;
        QStringList helpers;
        for (size_t at = 1; at < group.processes.size(); ++at)
            helpers << QString::number(group.processes[at].id);
        lines << u"%1 %2|%3: %4"_s.arg(application.processId)
                     .arg(application.localizedName.value_or(u"-"_s),
                          application.bundleIdentifier.value_or(u"-"_s), helpers.join(u' '))
                     .trimmed();
    }
    return lines;
}

QByteArray scope(const QByteArray &name)
{
    return "0::/user.slice/app.slice/" + name + "\n";
}

const auto terminal = 34816; // /dev/pts/0

} // namespace

class TestApplicationGroups : public QObject
{
    Q_OBJECT

    std::unique_ptr<MadeSystem> m_system;

    QStringList applications(const std::vector<WindowFacts> &windows = {},
                             const std::unordered_set<qint32> &session = {}, const QString &locale = {}) const
    {
        ApplicationTable table(m_system->places(locale));
        table.setWindows(windows, session);
        table.refresh();
        return summary(table);
    }
    QString bin(const char *name) const { return m_system->path(u"bin/"_s + QString::fromLatin1(name)); }

private Q_SLOTS:
    void init()
    {
        m_system = std::make_unique<MadeSystem>();
        for (const auto *name : {"steam", "discord", "xterm", "firefox", "chromium", "service"})
            m_system->addProgram(u"bin/"_s + QString::fromLatin1(name));
        m_system->addEntry(u"steam.desktop"_s, "Name=Steam\nName[ru]=Стим\nExec=steam %U\n");
        m_system->addEntry(u"discord.desktop"_s, "Name=Discord\nExec=discord\n");
        m_system->addEntry(u"xterm.desktop"_s,
                           "Name=XTerm\nExec=xterm\nCategories=System;TerminalEmulator;\n");
        m_system->addEntry(u"firefox.desktop"_s, "Name=Firefox\nExec=firefox %u\n");
        m_system->addEntry(u"chromium.desktop"_s,
                           "Name=Chromium Web Browser\nName[ru]=Веб\nExec=chromium %U\n");
        m_system->addEntry(u"service.desktop"_s, "Name=Service\nExec=service\nNoDisplay=true\n");
        m_system->addEntry(u"shell.desktop"_s, "Name=Shell\nExec=bash\n");
        m_system->addEntry(u"python.desktop"_s, "Name=Python\nExec=/usr/bin/python3.11\nTerminal=true\n");
        m_system->addEntry(u"openbox.desktop"_s, "Name=Openbox\nExec=openbox\n");
    }

    void aHiddenApplicationIsOne()
    {
        m_system->addProcess({.id = 40, .executable = bin("steam")});
        QCOMPARE(applications(), QStringList{u"40 Steam|steam:"_s});
        QCOMPARE(applications({}, {}, u"ru_RU.UTF-8"_s), QStringList{u"40 Стим|steam:"_s});
    }
    void helpersBelongToTheirApplication()
    {
        m_system->addProcess({.id = 40, .executable = bin("firefox")});
        m_system->addProcess({.id = 41, .executable = bin("firefox"), .parent = 40});
        m_system->addProcess({.id = 42, .executable = u"/usr/lib/firefox/crash"_s, .parent = 41});
        m_system->addProcess({.id = 43, .executable = u"/usr/bin/sleep"_s});
        QCOMPARE(applications(), QStringList{u"40 Firefox|firefox: 41 42"_s});
    }
    void unrelatedProcessesAreApplicationsEach()
    {
        m_system->addProcess({.id = 40, .executable = bin("xterm")});
        m_system->addProcess({.id = 41, .executable = bin("xterm")});
        QCOMPARE(applications(), (QStringList{u"40 XTerm|xterm:"_s, u"41 XTerm|xterm:"_s}));
    }
    void severalWindowsMakeOneEntry()
    {
        m_system->addProcess({.id = 40, .executable = u"/opt/draw/draw"_s});
        QCOMPARE(applications({{40, {}, u"draw"_s, u"Draw"_s}, {40, {}, u"tools"_s, u"DrawTools"_s}}),
                 QStringList{u"40 Draw|-:"_s});
    }
    void aProcessWithNeitherIsNone()
    {
        m_system->addProcess({.id = 40, .executable = u"/usr/bin/sleep"_s});
        m_system->addProcess({.id = 41, .executable = u"/usr/bin/bash"_s});
        m_system->addProcess(
            {.id = 42, .executable = u"/usr/bin/python3.11"_s, .arguments = {u"/x/job.py"_s}});
        m_system->addProcess({.id = 43, .executable = bin("service")});
        QCOMPARE(applications(), QStringList());
        QCOMPARE(applications({{43, {}, u"service"_s, u"Service"_s}}), QStringList{u"43 Service|service:"_s});
    }
    void aWindowWithoutAnEntryIsNamedByItsClass()
    {
        m_system->addProcess({.id = 40, .executable = u"/opt/game/game"_s});
        QCOMPARE(applications({{40, {}, u"game"_s, u"Great Game"_s}}), QStringList{u"40 Great Game|-:"_s});
        QCOMPARE(applications({{40, {}, {}, {}}}), QStringList{u"40 game|-:"_s});
    }
    void aWindowIsNotThatOfALaterProcess()
    {
        m_system->addProcess({.id = 40, .executable = u"/opt/a/a"_s, .startTime = 100});
        m_system->addProcess({.id = 41, .executable = u"/opt/b/b"_s, .startTime = 300});
        const auto seen = startOf(200);
        QCOMPARE(applications({{40, {}, u"a"_s, u"A"_s, seen}, {41, {}, u"b"_s, u"B"_s, seen}}),
                 QStringList{u"40 A|-:"_s});
    }
    void windowsNameTheirEntry()
    {
        m_system->addProcess({.id = 40, .executable = u"/usr/bin/python3.11"_s, .arguments = {u"main.py"_s}});
        QCOMPARE(applications({{40, {}, u"discord"_s, u"Discord"_s}}), QStringList{u"40 Discord|discord:"_s});
        QCOMPARE(applications({{40, u"steam"_s, u"x"_s, u"Discord"_s}}), QStringList{u"40 Steam|steam:"_s});
        // What runs is surer than what a window's class says.
        m_system->addProcess({.id = 41, .executable = bin("xterm")});
        QCOMPARE(applications({{41, {}, u"steam"_s, u"steam"_s}}), QStringList{u"41 XTerm|xterm:"_s});
    }

    void programsInATerminalAreTheirOwn()
    {
        m_system->addProcess({.id = 40, .executable = bin("xterm")});
        m_system->addProcess(
            {.id = 41, .executable = u"/usr/bin/bash"_s, .parent = 40, .terminal = terminal});
        m_system->addProcess(
            {.id = 42, .executable = u"/usr/bin/make"_s, .parent = 41, .terminal = terminal});
        m_system->addProcess({.id = 43, .executable = bin("steam"), .parent = 41, .terminal = terminal});
        m_system->addProcess(
            {.id = 44, .executable = u"/opt/x/viewer"_s, .parent = 41, .terminal = terminal});
        m_system->addProcess({.id = 45, .executable = u"/opt/x/child"_s, .parent = 44, .terminal = terminal});
        m_system->addProcess({.id = 46, .executable = bin("xterm"), .parent = 41, .terminal = terminal});
        QCOMPARE(applications({{40, {}, u"xterm"_s, u"XTerm"_s}, {44, {}, u"viewer"_s, u"Viewer"_s}}),
                 (QStringList{u"40 XTerm|xterm:"_s, u"43 Steam|steam:"_s, u"44 Viewer|-: 45"_s,
                              u"46 XTerm|xterm:"_s}));
    }
    void aTerminalsScopeIsNotItsChildren()
    {
        const auto group = scope("app-gnome-xterm-40.scope");
        m_system->addProcess({.id = 40, .executable = bin("xterm"), .cgroup = group});
        m_system->addProcess({.id = 41, .executable = u"/usr/bin/daemon"_s, .cgroup = group});
        QCOMPARE(applications(), QStringList{u"40 XTerm|xterm:"_s});
    }
    void aScopeNamesWhatNothingElseDoes()
    {
        const auto group = scope("app-gnome-discord-40.scope");
        m_system->addProcess({.id = 40, .executable = u"/opt/odd/start-it"_s, .cgroup = group});
        m_system->addProcess({.id = 41, .executable = u"/opt/odd/loose"_s, .cgroup = group});
        m_system->addProcess({.id = 42, .executable = bin("steam"), .cgroup = group});
        QCOMPARE(applications(), (QStringList{u"40 Discord|discord: 41"_s, u"42 Steam|steam:"_s}));
    }
    void anApplicationStartedByAnotherIsItsOwn()
    {
        m_system->addProcess({.id = 40, .executable = bin("steam")});
        m_system->addProcess({.id = 41, .executable = bin("firefox"), .parent = 40});
        m_system->addProcess({.id = 42, .executable = bin("steam"), .parent = 41});
        m_system->addProcess({.id = 43, .executable = u"/games/quest/quest"_s, .parent = 40});
        m_system->addProcess({.id = 44, .executable = bin("steam") + u"-helper"_s, .parent = 40});
        QCOMPARE(applications({{43, {}, u"quest"_s, u"Quest"_s}, {44, {}, u"Settings"_s, u"steam"_s}}),
                 (QStringList{u"40 Steam|steam: 42 44"_s, u"41 Firefox|firefox:"_s, u"43 Quest|-:"_s}));
    }

    void wrapperScriptsAreTheirProgram()
    {
        // The wrapper waits while the program it is named after runs from elsewhere.
        m_system->addProcess({.id = 40, .executable = u"/usr/bin/bash"_s, .arguments = {bin("steam")}});
        m_system->addProcess({.id = 41, .executable = u"/usr/bin/sleep"_s, .parent = 40});
        QCOMPARE(applications(), QStringList{u"40 Steam|steam: 41"_s});
        m_system->addProcess({.id = 42, .executable = u"/home/me/.steam/steam"_s, .parent = 40});
        QCOMPARE(applications(), QStringList{u"42 Steam|steam: 40 41"_s});
    }
    void launchedFileCountsForItsProcessAlone()
    {
        const auto launched =
            environmentOf({"GIO_LAUNCHED_DESKTOP_FILE=/usr/share/applications/discord.desktop",
                           "GIO_LAUNCHED_DESKTOP_FILE_PID=40"});
        m_system->addProcess({.id = 40, .executable = u"/opt/a/main"_s, .environment = launched});
        m_system->addProcess({.id = 41, .executable = u"/opt/b/main"_s, .environment = launched});
        QCOMPARE(applications(), QStringList{u"40 Discord|discord:"_s});
    }
    void chromiumWrapperLeavesItsMark()
    {
        const auto mark = environmentOf({"CHROME_DESKTOP=chromium.desktop"});
        m_system->addProcess({.id = 40, .executable = u"/usr/lib/chromium/chromium"_s, .environment = mark});
        m_system->addProcess({.id = 41,
                              .executable = u"/usr/lib/chromium/chromium"_s,
                              .parent = 40,
                              .arguments = {u"--type=renderer"_s},
                              .environment = mark});
        m_system->addProcess({.id = 50, .executable = u"/usr/bin/viewer"_s, .environment = mark});
        QCOMPARE(applications({}, {}, u"ru_RU"_s), QStringList{u"40 Chromium|chromium: 41"_s});
    }
    void sandboxesNameTheirApplication()
    {
        m_system->addEntry(u"org.example.Boxed.desktop"_s,
                           "Name=Boxed\nExec=flatpak run org.example.Boxed\n");
        m_system->addEntry(u"tune_tune.desktop"_s, "Name=Tune\nX-SnapInstanceName=tune\n");
        const auto group = scope("app-flatpak-org.example.Boxed-40.scope");
        m_system->addProcess({.id = 40, .executable = u"/usr/bin/bwrap"_s, .cgroup = group});
        m_system->addProcess({.id = 41, .executable = u"/app/bin/boxed"_s, .parent = 40, .cgroup = group});
        m_system->write(u"proc/41/root/.flatpak-info"_s,
                        "[Instance]\nname=no\n[Application]\nname=org.example.Boxed\n");
        m_system->addProcess(
            {.id = 50, .executable = u"/snap/tune/3/bin/x"_s, .cgroup = scope("snap.tune.tune-1.scope")});
        QCOMPARE(applications(), (QStringList{u"41 Boxed|org.example.Boxed: 40"_s, u"50 Tune|tune_tune:"_s}));
    }

    void partsOfTheSessionAreNone()
    {
        m_system->addProcess({.id = 40, .executable = u"/usr/bin/openbox"_s});
        m_system->addProcess({.id = 41, .executable = bin("steam"), .parent = 40});
        m_system->addProcess({.id = 42, .executable = u"/opt/wm/oddwm"_s});
        m_system->addProcess({.id = 43, .executable = u"/usr/bin/dbus-daemon"_s});
        QCOMPARE(applications({{40, {}, u"openbox"_s, u"Openbox"_s}, {42, {}, u"odd"_s, u"Odd"_s}}, {42}),
                 QStringList{u"41 Steam|steam:"_s});
    }
    void circlesAndStrangersEnd()
    {
        m_system->addProcess({.id = 40, .executable = bin("steam"), .parent = 41, .startTime = 7});
        m_system->addProcess({.id = 41, .executable = u"/bin/x"_s, .parent = 40, .startTime = 7});
        m_system->addProcess({.id = 42, .executable = u"/bin/y"_s, .parent = 42});
        // Its parent's number has passed on to a later process.
        m_system->addProcess({.id = 43, .executable = u"/bin/orphan"_s, .parent = 50, .startTime = 100});
        m_system->addProcess({.id = 50, .executable = bin("discord"), .startTime = 500});
        QCOMPARE(applications({{-5, {}, {}, {}}, {4711, {}, u"gone"_s, u"Gone"_s}}),
                 (QStringList{u"40 Steam|steam:"_s, u"50 Discord|discord:"_s}));
    }
    void aMissingNameLeavesTheWindowsOrNone()
    {
        m_system->addProgram(u"bin/plain"_s);
        m_system->addEntry(u"plain.desktop"_s, "Exec=plain\n");
        m_system->addProcess({.id = 40, .executable = bin("plain")});
        QCOMPARE(applications(), QStringList{u"40 -|plain:"_s});
        QCOMPARE(applications({{40, {}, u"plain"_s, u"Plain"_s}}), QStringList{u"40 Plain|plain:"_s});
    }
    void namesOfFilesAreShownPlainly()
    {
        const auto odd = u"od\nd\x01"_s;
        m_system->addProgram(u"bin/"_s + odd);
        m_system->addEntry(QString(200, u'l') + u"/"_s + QString(200, u'L') + u".desktop"_s, "Exec=long\n");
        m_system->addEntry(u"new\nline.desktop"_s, "Exec=line\n");
        m_system->addProgram(u"bin/long"_s);
        m_system->addProgram(u"bin/line"_s);
        m_system->addProcess({.id = 40, .executable = m_system->path(u"bin/"_s + odd)});
        m_system->addProcess({.id = 41, .executable = bin("long")});
        m_system->addProcess({.id = 42, .executable = bin("line")});
        ApplicationTable table(m_system->places());
        table.setWindows({{40, {}, {}, {}}}, {});
        table.refresh();
        QCOMPARE(table.groups().size(), size_t(3));
        QCOMPARE(table.groups()[0].application.localizedName, u"od d"_s);
        const auto id = table.groups()[1].application.bundleIdentifier.value_or(QString());
        QCOMPARE(id, QString(200, u'l') + u'-' + QString(55, u'L'));
        QCOMPARE(table.groups()[2].application.bundleIdentifier, u"new line"_s);
    }

    void twoUnreadableProgramsAreNotTheSame()
    {
        m_system->addProcess({.id = 40, .executable = {}, .command = "one"});
        m_system->addProcess({.id = 41, .executable = {}, .parent = 40, .command = "two"});
        const WindowFacts one{40, {}, {}, u"One"_s};
        const WindowFacts two{41, {}, {}, u"Two"_s};
        QCOMPARE(applications({one, two}), (QStringList{u"40 One|-:"_s, u"41 Two|-:"_s}));
    }

    void aRunningProgramFollowsItsEntryAndWhatItBecomes()
    {
        using namespace std::chrono_literals;
        m_system->addProgram(u"bin/fresh"_s);
        m_system->addProcess({.id = 40, .executable = bin("fresh")});
        ApplicationTable table(m_system->places());
        table.refresh(1000s);
        QCOMPARE(summary(table), QStringList());
        m_system->addEntry(u"fresh.desktop"_s, "Name=Fresh\nExec=fresh\n");
        table.refresh(1011s);
        QCOMPARE(summary(table), QStringList{u"40 Fresh|fresh:"_s});
        m_system->addProcess({.id = 40, .executable = bin("steam")});
        table.refresh(1020s); // before the entries are looked at again
        QCOMPARE(summary(table), QStringList{u"40 Steam|steam:"_s});
    }

    void givesThePathOfTheProgram()
    {
        m_system->addProcess({.id = 40, .executable = bin("steam") + u" (deleted)"_s});
        ApplicationTable table(m_system->places());
        table.refresh();
        QCOMPARE(table.groups().size(), size_t(1));
        QCOMPARE(table.groups()[0].application.bundlePath, std::optional(bin("steam")));
    }

    void programsOfAnotherDisplayBelongToAnotherSession()
    {
        m_system->addProcess(
            {.id = 100, .executable = bin("steam"), .environment = environmentOf({"DISPLAY=:7.0"})});
        m_system->addProcess(
            {.id = 200, .executable = bin("discord"), .environment = environmentOf({"DISPLAY=:8"})});
        m_system->addProcess({.id = 300, .executable = bin("firefox")}); // started by a service, say
        m_system->addProcess(
            {.id = 400, .executable = bin("chromium"), .environment = environmentOf({"DISPLAY=:8"})});
        auto places = m_system->places();
        places.display = u":7"_s;
        ApplicationTable table(places);
        table.setWindows({{400, {}, {}, {}}}, {});
        table.refresh();
        QCOMPARE(summary(table), QStringList({u"100 Steam|steam:"_s, u"300 Firefox|firefox:"_s,
                                              u"400 Chromium|chromium:"_s}));
    }

    void displaysAreComparedWithoutTheirScreen_data()
    {
        QTest::addColumn<QByteArray>("variable");
        QTest::addColumn<QString>("display");
        QTest::newRow("plain") << ":0"_ba << u":0"_s;
        QTest::newRow("with a screen") << ":10.1"_ba << u":10"_s;
        QTest::newRow("local transport") << "unix:0"_ba << u":0"_s;
        QTest::newRow("another host") << "box.example.org:10.0"_ba << u"box.example.org:10"_s;
        QTest::newRow("no colon") << "nonsense.1"_ba << u"nonsense.1"_s;
        QTest::newRow("empty") << ""_ba << QString();
    }
    void displaysAreComparedWithoutTheirScreen()
    {
        QFETCH(QByteArray, variable);
        QTEST(displayName(variable), "display");
    }
};

QUORVEL_TEST(TestApplicationGroups, QCoreApplication)
#include "tst_applicationGroups.moc"
