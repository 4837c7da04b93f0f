// Opening an address on a desktop whose xdg-open is the test's own.
#include "VirtualDesktop.h"
#include "desktopParts.h"

#include <QFile>
#include <QTest>
#include <QUrl>

#include <memory>

using namespace Qt::StringLiterals;

class tst_desktopUrlOpener : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<VirtualDesktop> m_desktop;

    QByteArray content(const QString &name) const
    {
        QFile file(m_desktop->filePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    void writeFile(const QString &name, const QByteArray &bytes) const
    {
        QFile file(m_desktop->filePath(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("the test cannot write its own file");
    }

    /// One that waits for the file "go", as a browser that starts takes its time, and then tells in "opened"
    /// what it was asked to open.
    void makeSlowOpener() const
    {
        writeFile(u"xdg-open"_s,
                  "#!/bin/sh\n"
                  "cd '" +
                      QFile::encodeName(m_desktop->filePath(u""_s)) +
                      "' || exit\n"
                      "turns=0\n"
                      "while [ ! -e go ] && [ $turns -lt 1200 ]; do sleep 0.05; turns=$((turns + 1)); done\n"
                      "printf '%s|' \"$@\" >opening && mv opening opened\n");
        QFile::setPermissions(m_desktop->filePath(u"xdg-open"_s),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    QByteArray outputOfProbe(const QByteArray &url, const QString &path) const
    {
        auto environment = m_desktop->environment();
        environment.insert(u"QT_QPA_PLATFORM"_s, u"xcb"_s);
        environment.insert(u"PATH"_s, path);
        QProcess probe;
        bindToTest(probe);
        probe.setProcessEnvironment(environment);
        probe.start(QString::fromLocal8Bit(OPENER_PROBE), {QString::fromUtf8(url)});
        probe.waitForFinished(patience);
        return probe.readAllStandardOutput() + probe.readAllStandardError();
    }

private Q_SLOTS:
    void init()
    {
        m_desktop = std::make_unique<VirtualDesktop>();
        QVERIFY2(m_desktop->works(), "Xvfb, openbox, xdotool and dbus-daemon are needed");
    }

    void opensWithoutWaiting_data()
    {
        QTest::addColumn<QByteArray>("url");
        QTest::newRow("plain") << QByteArray("https://example.org/auth?state=1&redirect=a%20b");
        QTest::newRow("for a shell") << QByteArray("https://example.org/?a=$(touch%20go)&b='c';d&e=\\|*");
    }
    void opensWithoutWaiting()
    {
        QFETCH(QByteArray, url);
        makeSlowOpener();
        const auto took =
            outputOfProbe(url, m_desktop->filePath(u""_s) + u':' + qEnvironmentVariable("PATH"));
        QVERIFY2(took.trimmed().toLongLong() > 0, took.constData()); // it has returned
        QVERIFY(content(u"opened"_s).isEmpty());                     // before the address was open
        writeFile(u"go"_s, "");
        const auto asked = QUrl::fromEncoded(url).toEncoded();
        TRY_COMPARE(content(u"opened"_s), asked + '|');
        qInfo() << "open() took" << took.trimmed().constData() << "us";
    }

    void saysThatNothingOpensAddresses()
    {
        const auto said = outputOfProbe("https://example.org/", m_desktop->filePath(u"none"_s));
        QVERIFY2(said.contains("the desktop has nothing that opens this address"), said.constData());
    }
};

QTEST_GUILESS_MAIN(tst_desktopUrlOpener)
#include "tst_desktopUrlOpener.moc"
