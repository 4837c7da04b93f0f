#include "baseFolders.h"
#include "suite.h"

#include <QFile>

#include <pwd.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

/// Sets a variable, or unsets it where there is no value.
void setVariable(const char *name, const QString &value)
{
    if (value.isNull())
        qunsetenv(name);
    else
        qputenv(name, QFile::encodeName(value));
}

} // namespace

class tst_baseFolders : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void followsTheSpecification_data();
    void followsTheSpecification();
    void listsLeaveOutWhatIsNotAbsolute_data();
    void listsLeaveOutWhatIsNotAbsolute();
    void asksTheUserDatabaseWithoutHome_data();
    void asksTheUserDatabaseWithoutHome();
};

void tst_baseFolders::followsTheSpecification_data()
{
    QTest::addColumn<QString>("home");
    QTest::addColumn<QString>("variable");
    QTest::addColumn<QString>("data");
    QTest::addColumn<QString>("preferences");

    const QString data = u"/home/anna/.local/share/Quorvel"_s;
    const QString preferences = u"/home/anna/.config/quorvel"_s;
    QTest::newRow("unset") << u"/home/anna"_s << QString() << data << preferences;
    QTest::newRow("empty") << u"/home/anna"_s << u""_s << data << preferences;
    QTest::newRow("relative") << u"/home/anna"_s << u"share"_s << data << preferences;
    QTest::newRow("relative to here") << u"/home/anna"_s << u"./share"_s << data << preferences;
    QTest::newRow("tilde") << u"/home/anna"_s << u"~/share"_s << data << preferences;
    QTest::newRow("home ends in slash") << u"/home/anna/"_s << QString() << data << preferences;
    QTest::newRow("home is root") << u"/"_s << QString() << u"/.local/share/Quorvel"_s
                                  << u"/.config/quorvel"_s;
    QTest::newRow("absolute") << u"/home/anna"_s << u"/x/y"_s << u"/x/y/Quorvel"_s << u"/x/y/quorvel"_s;
    QTest::newRow("ends in slash") << u"/home/anna"_s << u"/x/"_s << u"/x/Quorvel"_s << u"/x/quorvel"_s;
    QTest::newRow("root") << u"/home/anna"_s << u"/"_s << u"/Quorvel"_s << u"/quorvel"_s;
    QTest::newRow("not of ASCII") << u"/home/anna"_s << u"/дом"_s << u"/дом/Quorvel"_s << u"/дом/quorvel"_s;
}

void tst_baseFolders::followsTheSpecification()
{
    QFETCH(QString, home);
    QFETCH(QString, variable);
    setVariable("HOME", home);
    setVariable("XDG_DATA_HOME", variable);
    setVariable("XDG_CONFIG_HOME", variable);
    QTEST(dataFolder(), "data");
    QTEST(preferencesFolder(), "preferences");
}

void tst_baseFolders::listsLeaveOutWhatIsNotAbsolute_data()
{
    QTest::addColumn<QString>("variable");
    QTest::addColumn<QStringList>("folders"); // empty: the default
    QTest::newRow("unset") << QString() << QStringList();
    QTest::newRow("empty") << u""_s << QStringList();
    QTest::newRow("several") << u"/x:/y/"_s << QStringList{u"/x"_s, u"/y"_s};
    QTest::newRow("some relative") << u"share:/x:./y:~/z:"_s << QStringList{u"/x"_s};
    QTest::newRow("all relative") << u"share:."_s << QStringList();
    QTest::newRow("not of ASCII") << u"/дом"_s << QStringList{u"/дом"_s};
}

void tst_baseFolders::listsLeaveOutWhatIsNotAbsolute()
{
    QFETCH(QString, variable);
    QFETCH(QStringList, folders);
    const auto path = qgetenv("PATH");
    for (const auto *name : {"XDG_DATA_DIRS", "XDG_CONFIG_DIRS", "PATH"})
        setVariable(name, variable);
    const auto data = dataFolders();
    const auto config = configFolders();
    const auto programs = programFolders();
    qputenv("PATH", path);
    const auto orElse = [&](const QStringList &otherwise) { return folders.isEmpty() ? otherwise : folders; };
    QCOMPARE(data, orElse({u"/usr/local/share"_s, u"/usr/share"_s}));
    QCOMPARE(config, orElse({u"/etc/xdg"_s}));
    QCOMPARE(programs,
             orElse({u"/usr/local/bin"_s, u"/usr/bin"_s, u"/bin"_s, u"/usr/local/games"_s, u"/usr/games"_s}));
}

void tst_baseFolders::asksTheUserDatabaseWithoutHome_data()
{
    QTest::addColumn<QString>("home");
    QTest::newRow("unset") << QString();
    QTest::newRow("empty") << u""_s;
    QTest::newRow("relative") << u"anna"_s;
}

void tst_baseFolders::asksTheUserDatabaseWithoutHome()
{
    QFETCH(QString, home);
    setVariable("HOME", home);
    setVariable("XDG_DATA_HOME", QString());
    setVariable("XDG_CONFIG_HOME", QString());
    const passwd *entry = ::getpwuid(::getuid());
    if (!entry)
        QSKIP("not run: this user is not in the user database");
    const QString folder = QFile::decodeName(entry->pw_dir);
    QCOMPARE(dataFolder(), folder + u"/.local/share/Quorvel"_s);
    QCOMPARE(preferencesFolder(), folder + u"/.config/quorvel"_s);
}

QUORVEL_TEST(tst_baseFolders)
#include "tst_baseFolders.moc"
