#include "AttemptSchedule.h"
#include "suite.h"

using namespace std::chrono_literals;

class tst_AttemptSchedule : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void triesAtOnceThenForASecondThenSeldom()
    {
        AttemptSchedule schedule(m_now);
        QVERIFY(schedule.due() == m_now);
        auto now = m_now;
        int tries = 0;
        for (; tries < 100; ++tries) {
            schedule.foundNobody(now);
            if (schedule.due() - now == AttemptSchedule::safetyPause)
                break;
            QVERIFY(schedule.due() - now >= 10ms && schedule.due() - now <= 1s);
            now = schedule.due();
        }
        QVERIFY(tries >= 3);
        QVERIFY(now - m_now >= 1s && now - m_now < 2s);
        schedule.foundNobody(now);
        QVERIFY(schedule.due() == now + AttemptSchedule::safetyPause);
        schedule.somethingNew(now);
        QVERIFY(schedule.due() == now);
    }

    void pausesGrowAndBeginAnew()
    {
        AttemptSchedule schedule(m_now);
        for (const auto pause : {1s, 2s, 4s, 8s, 16s, 20s, 20s}) {
            schedule.lost(m_now, false);
            QVERIFY(schedule.due() == m_now + pause);
        }
        schedule.lost(m_now, true);
        QVERIFY(schedule.due() == m_now + 1s);
        schedule.lost(m_now, false);
        QVERIFY(schedule.due() == m_now + 2s);
    }

    void aPauseIsCutShortByANewSocketOnly()
    {
        AttemptSchedule schedule(m_now);
        schedule.lost(m_now, false);
        schedule.foundNobody(m_now + 1s); // the program has ended meanwhile
        QVERIFY(schedule.due() == m_now + 1s + AttemptSchedule::safetyPause);
        schedule.lost(m_now, false);
        schedule.somethingNew(m_now + 500ms);
        QVERIFY(schedule.due() == m_now + 500ms);
    }

private:
    const AttemptSchedule::Clock::time_point m_now{1h};
};

QUORVEL_TEST(tst_AttemptSchedule)
#include "tst_AttemptSchedule.moc"
