#include "cgroupNames.h"
#include "suite.h"

using namespace Qt::StringLiterals;

class TestCgroupNames : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsTheApplication_data()
    {
        QTest::addColumn<QByteArray>("unit");
        QTest::addColumn<QStringList>("ids");
        QTest::newRow("launcher and random")
            << QByteArray("app-gnome-org.gnome.Calculator-4711.scope")
            << QStringList{u"gnome-org.gnome.Calculator"_s, u"org.gnome.Calculator"_s};
        QTest::newRow("escaped dash") << QByteArray("app-gnome-libreoffice\\x2dwriter-12.scope")
                                      << QStringList{u"gnome-libreoffice-writer"_s, u"libreoffice-writer"_s};
        QTest::newRow("no launcher") << QByteArray("app-org.kde.konsole-99.scope")
                                     << QStringList{u"org.kde.konsole"_s};
        QTest::newRow("dash left plain")
            << QByteArray("app-google-chrome-5.scope") << QStringList{u"google-chrome"_s, u"chrome"_s};
        QTest::newRow("service with an instance")
            << QByteArray("app-org.kde.dolphin@1f2e3d.service") << QStringList{u"org.kde.dolphin"_s};
        QTest::newRow("service without") << QByteArray("app-firefox.service") << QStringList{u"firefox"_s};
        QTest::newRow("escaped slash is kept as text")
            << QByteArray("app-a\\x2fb-1.scope") << QStringList{u"a/b"_s};
        QTest::newRow("broken escape") << QByteArray("app-a\\x2-1.scope") << QStringList{u"a\\x2"_s};
        QTest::newRow("terminal's child") << QByteArray("vte-spawn-1234.scope") << QStringList();
        QTest::newRow("session") << QByteArray("session-2.scope") << QStringList();
        QTest::newRow("slice") << QByteArray("app.slice") << QStringList();
        QTest::newRow("nothing inside") << QByteArray("app-.scope") << QStringList();
    }
    void readsTheApplication()
    {
        QFETCH(QByteArray, unit);
        const QByteArray path = "/user.slice/user-1000.slice/user@1000.service/app.slice/" + unit;
        const auto found = cgroupApplication("0::" + path + "\n");
        QTEST(found.desktopIds, "ids");
        QCOMPARE(found.unit, found.desktopIds.isEmpty() ? QString() : QString::fromUtf8(path));
    }

    void readsTheSnap()
    {
        const auto found = cgroupApplication("1:name=systemd:/x\n"
                                             "0::/user.slice/snap.chromium.chromium-4a5b.scope\n");
        QCOMPARE(found.snapName, u"chromium"_s);
        QCOMPARE(found.desktopIds, QStringList());
    }

    void endsWithNoise()
    {
        QCOMPARE(cgroupApplication({}), CgroupApplication());
        QCOMPARE(cgroupApplication("no colons\n:\n::\n"), CgroupApplication());
    }
};

QUORVEL_TEST(TestCgroupNames, QCoreApplication)
#include "tst_cgroupNames.moc"
