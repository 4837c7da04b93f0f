#include "ContractDesktop.h"
#include "FakeRunningApplications.h"
#include "FakeSystemIdle.h"
#include "VirtualDesktop.h"
#include "X11Applications.h"
#include "X11Idle.h"
#include "patience.h"

#include <QStandardPaths>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

class FakeDesktop : public ContractDesktop
{
public:
    RunningApplications &applications() override { return m_applications; }
    SystemIdle &idle() override { return m_idle; }
    qint32 start(const QString &name, Manner manner) override
    {
        return manner == Manner::Stubborn ? m_applications.startStubborn(name) : m_applications.start(name);
    }
    void end(qint32 processId) override { m_applications.end(processId); }
    void bringToFront(qint32 processId) override { m_applications.bringToFront(processId); }

private:
    FakeRunningApplications m_applications;
    FakeSystemIdle m_idle;
};

class X11Desktop : public ContractDesktop
{
public:
    explicit X11Desktop(VirtualDesktop::Manager manager)
        : m_desktop(manager)
        , m_managed(manager != VirtualDesktop::Manager::None)
        , m_connection(std::make_shared<X11Connection>(m_desktop.display()))
        , m_idle(m_connection)
        , m_applications(m_connection, places(m_desktop), OwnQuit(QDBusConnection(u"none"_s)))
    {}
    ~X11Desktop() override
    {
        for (const auto id : m_started)
            m_desktop.end(id);
    }

    static ApplicationPlaces places(const VirtualDesktop &desktop)
    {
        ApplicationPlaces places;
        places.desktop = {{desktop.path(u"data"_s)}, {desktop.path()}, {}};
        return places;
    }

    bool works() const { return m_desktop.works(); }
    QString report() const { return m_desktop.report(); }

    RunningApplications &applications() override { return m_applications; }
    SystemIdle &idle() override { return m_idle; }
    bool tellsFrontmost() const override { return m_managed; }
    qint32 start(const QString &name, Manner manner) override
    {
        QStringList options{u"--class"_s, name};
        if (manner == Manner::Stubborn)
            options << u"--stubborn"_s;
        const auto id = m_desktop.start(u"decoy-"_s + name, options);
        m_started.push_back(id);
        return id;
    }
    void end(qint32 processId) override
    {
        std::erase(m_started, processId);
        m_desktop.end(processId);
    }
    void bringToFront(qint32 processId) override
    {
        m_desktop.run(u"xdotool"_s, {u"search"_s, u"--all"_s, u"--pid"_s, QString::number(processId),
                                     u"--class"_s, u"."_s, u"windowactivate"_s});
    }

private:
    VirtualDesktop m_desktop;
    bool m_managed;
    std::shared_ptr<X11Connection> m_connection;
    X11Idle m_idle;
    X11Applications m_applications;
    std::vector<qint32> m_started;
};

} // namespace

/// What every implementation of the two ports has to hold, on every desktop there is.
class TestApplicationsContract : public QObject
{
    Q_OBJECT

    using Manner = ContractDesktop::Manner;

    std::unique_ptr<ContractDesktop> m_desktop;
    X11Desktop *m_x11 = nullptr; // the same, where it is one

    RunningApplications &applications() { return m_desktop->applications(); }
    QList<qint32> listed()
    {
        QList<qint32> numbers;
        for (const auto &application : applications().running())
            numbers << application.processId;
        return numbers;
    }
    RunningApplication entry(qint32 id)
    {
        for (const auto &application : applications().running()) {
            if (application.processId == id)
                return application;
        }
        return {};
    }

private Q_SLOTS:
    void initTestCase_data()
    {
        QTest::addColumn<int>("kind");
        QTest::newRow("fake") << 0;
        QTest::newRow("X11 with openbox") << 1;
        QTest::newRow("X11 without a window manager") << 2;
    }
    void init()
    {
        QFETCH_GLOBAL(int, kind);
        if (kind > 0 && QStandardPaths::findExecutable(u"Xvfb"_s).isEmpty())
            QSKIP("not run: there is no Xvfb here");
        if (kind == 0) {
            m_desktop = std::make_unique<FakeDesktop>();
            return;
        }
        auto desktop = std::make_unique<X11Desktop>(kind == 1 ? VirtualDesktop::Manager::Openbox
                                                              : VirtualDesktop::Manager::None);
        m_x11 = desktop.get();
        m_desktop = std::move(desktop);
        QVERIFY2(m_x11->works(), qPrintable(m_x11->report()));
    }
    void cleanup()
    {
        if (QTest::currentTestFailed() && m_x11)
            qWarning().noquote() << "The desktop:" << m_x11->report();
        m_x11 = nullptr;
        m_desktop.reset();
    }

    void works()
    {
        QCOMPARE(applications().availability(), Availability::working());
        QCOMPARE(m_desktop->idle().availability(), Availability::working());
        const auto since = m_desktop->idle().sinceLastInput();
        QVERIFY(since && *since >= 0ns);
        QCOMPARE(m_desktop->idle().seconds(), since->count() / 1'000'000'000);
    }

    void anEmptyDesktopHasNobodyInFront()
    {
        QVERIFY(!applications().frontmost());
        QCOMPARE(listed(), QList<qint32>());
    }

    void listsEachApplicationOnceInALastingOrder()
    {
        const auto first = m_desktop->start(u"Alpha"_s, Manner::Polite);
        TRY_COMPARE(listed(), QList{first});
        const auto second = m_desktop->start(u"Beta"_s, Manner::Polite);
        const auto third = m_desktop->start(u"Alpha"_s, Manner::Polite);
        TRY_COMPARE(listed().size(), 3);
        const auto order = listed();
        QVERIFY(order.contains(first) && order.contains(second) && order.contains(third));
        m_desktop->bringToFront(first);
        QCOMPARE(listed(), order);
        QCOMPARE(entry(second).localizedName, std::optional(u"Beta"_s));
        m_desktop->end(second);
        auto left = order;
        left.removeAll(second);
        TRY_COMPARE(listed(), left);
    }

    void tellsWhoIsInFront()
    {
        const auto first = m_desktop->start(u"Alpha"_s, Manner::Polite);
        const auto second = m_desktop->start(u"Beta"_s, Manner::Polite);
        TRY_COMPARE(listed().size(), 2);
        if (!m_desktop->tellsFrontmost()) {
            QVERIFY(!applications().frontmost());
            return;
        }
        const auto front = [&] { return applications().frontmost().value_or(RunningApplication()); };
        TRY_COMPARE(front().processId, second);
        m_desktop->bringToFront(first);
        TRY_COMPARE(front(), entry(first));
        m_desktop->end(first);
        TRY_VERIFY(front().processId != first);
    }

    void quitsPolitely()
    {
        const auto first = m_desktop->start(u"Alpha"_s, Manner::Polite);
        const auto second = m_desktop->start(u"Beta"_s, Manner::Polite);
        TRY_COMPARE(listed().size(), 2);
        applications().terminate(entry(first));
        TRY_COMPARE(listed(), QList{second});
    }

    void aStubbornOneYieldsToForceAlone()
    {
        const auto stubborn = m_desktop->start(u"Alpha"_s, Manner::Stubborn);
        const auto other = m_desktop->start(u"Beta"_s, Manner::Polite);
        TRY_COMPARE(listed().size(), 2);
        const auto application = entry(stubborn);
        applications().terminate(application);
        QTest::qWait(300);
        QVERIFY(listed().contains(stubborn));
        applications().forceTerminate(application);
        TRY_COMPARE(listed(), QList{other});
    }

    void oneThatIsGoneIsLeftAlone()
    {
        const auto first = m_desktop->start(u"Alpha"_s, Manner::Polite);
        const auto second = m_desktop->start(u"Beta"_s, Manner::Polite);
        TRY_COMPARE(listed().size(), 2);
        const auto application = entry(first);
        m_desktop->end(first);
        applications().terminate(application);
        applications().forceTerminate(application);
        applications().terminate({});
        applications().forceTerminate({});
        QTest::qWait(50);
        TRY_COMPARE(listed(), QList{second});
    }
};

QTEST_GUILESS_MAIN(TestApplicationsContract)
#include "tst_applicationsContract.moc"
