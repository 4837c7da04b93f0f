#pragma once

#include "QuorvelConfig.h"
#include "StudyCard.h"
#include "StudyTask.h"
#include "UserProgress.h"

#include <QRandomGenerator>

#include <deque>
#include <limits>

/// Records as nobody would write them, the same ones from the same seed.
class RandomRecords
{
public:
    explicit RandomRecords(quint32 seed)
        : m_random(seed)
    {}

    QuorvelConfig config()
    {
        return {number(), number(), number(), number(), texts(), texts(), texts(), texts(), number()};
    }
    UserProgress progress()
    {
        return {number(), number(), number(), number(), number(), number(), maybe(text()), texts()};
    }
    StudyCard card()
    {
        return {id(),     maybe(text()), text(),        text(),       time(),
                number(), number(),      maybe(time()), maybe(time())};
    }
    StudyTask task() { return {id(), text(), time(), maybe(time()), maybe(id()), maybe(id())}; }
    std::deque<StudyCard> cards()
    {
        std::deque<StudyCard> all;
        for (quint32 left = m_random.bounded(20U); left > 0; --left)
            all.push_back(card());
        return all;
    }
    std::deque<StudyTask> tasks()
    {
        std::deque<StudyTask> all;
        for (quint32 left = m_random.bounded(20U); left > 0; --left)
            all.push_back(task());
        return all;
    }

    /// Any code points, surrogates always in pairs.
    QString text()
    {
        static constexpr char32_t borders[] = {0,      1,      8,       9,       10,      12,      13,
                                               0x1F,   U' ',   U'"',    U'\\',   U'/',    0x7E,    0x7F,
                                               0x80,   0x7FF,  0x800,   0x2028,  0xD7FF,  0xE000,  0xFEFF,
                                               0xFFFD, 0xFFFF, 0x10000, 0x1F600, 0xFFFFF, 0x10FFFF};
        QString made;
        for (quint32 left = m_random.bounded(12U); left > 0; --left) {
            char32_t code = borders[m_random.bounded(quint32(std::size(borders)))];
            if (m_random.bounded(2) == 0)
                code = m_random.bounded(0x20U, 0x500U);
            made += QString::fromUcs4(&code, 1);
        }
        return made;
    }

private:
    qint64 number()
    {
        static constexpr qint64 borders[] = {
            0, 1, -1, std::numeric_limits<qint64>::max(), std::numeric_limits<qint64>::min(), 1LL << 53};
        const auto which = m_random.bounded(12U);
        return which < std::size(borders) ? borders[which] : qint64(m_random.generate64());
    }
    QStringList texts()
    {
        QStringList all;
        for (quint32 left = m_random.bounded(5U); left > 0; --left)
            all.append(text());
        return all;
    }
    QUuid id()
    {
        QUuid made;
        made.data1 = m_random.generate();
        made.data2 = ushort(m_random.generate());
        made.data3 = ushort(m_random.generate());
        for (uchar &byte : made.data4)
            byte = uchar(m_random.generate());
        return made;
    }
    /// From the first second of the year 1 to the last of the year 9999.
    QDateTime time()
    {
        constexpr qint64 first = -62'135'596'800;
        constexpr qint64 last = 253'402'300'799;
        const auto which = m_random.bounded(10);
        const qint64 any = first + qint64(m_random.generate64() % quint64(last - first + 1));
        return QDateTime::fromSecsSinceEpoch(which == 0 ? first : which == 1 ? last : any, Qt::UTC);
    }
    template <typename Value>
    std::optional<Value> maybe(Value value)
    {
        return m_random.bounded(3) == 0 ? std::nullopt : std::optional(std::move(value));
    }

    QRandomGenerator m_random;
};
