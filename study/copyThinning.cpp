#include "copyThinning.h"

#include "recordFileNames.h"
#include "recordText.h"
#include "recordTime.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <set>
#include <tuple>

using namespace Qt::StringLiterals;
using namespace std::chrono;

namespace {

constexpr auto allFor = seconds(hours(24));
constexpr auto dailyFor = seconds(days(14));
constexpr auto weeklyFor = dailyFor + seconds(weeks(8));

/// Reads "-20261121T101500Z". Names of many copies are read at each save, which Qt's own reading makes slow.
std::optional<QDateTime> readShortTime(const QByteArray &text)
{
    if (text.size() != 17 || text.front() != '-')
        return std::nullopt;
    const auto spread = text.mid(1, 4) + '-' + text.mid(5, 2) + '-' + text.mid(7, 5) + ':' + text.mid(12, 2) +
                        ':' + text.mid(14);
    return readRecordTime(std::string_view(spread.constData(), std::size_t(spread.size())));
}

/// How far apart the copies are that a copy stands between. Where room is short, those close together go
/// first.
enum class Rank { OneOfADay, LastOfDay, LastOfWeek, LastOfMonth };

struct DatedFile
{
    QString name;
    QString of;
    sys_seconds time;
    qint64 size;
    bool stays = true;
    Rank rank = Rank::OneOfADay;
};

std::vector<DatedFile> copiesByAge(const std::vector<ListedFile> &files)
{
    std::vector<DatedFile> copies;
    for (const auto &file : files) {
        if (const auto copy = readRollingCopyName(file.name))
            copies.push_back(
                {file.name, copy->of, sys_seconds(seconds(copy->time.toSecsSinceEpoch())), file.size});
    }
    std::sort(copies.begin(), copies.end(), [](const DatedFile &left, const DatedFile &right) {
        return std::tie(left.time, left.name) < std::tie(right.time, right.name);
    });
    return copies;
}

/// The spans that a moment lies in, each as a number that grows with time.
struct Spans
{
    qint64 day;
    qint64 week; ///< from Monday on, as ISO weeks are
    qint64 month;
};

Spans spansOf(sys_seconds time)
{
    const auto day = floor<days>(time);
    const auto monday = day - (weekday(day) - Monday);
    const year_month_day date(day);
    return {day.time_since_epoch().count(), monday.time_since_epoch().count(),
            qint64(int(date.year())) * 12 + unsigned(date.month())};
}

/// Walks one record file's copies from the newest to the oldest. The last of a month stays from the start,
/// also where it is not the last of its week, or the month would have lost it when its turn comes.
class LastOfEachSpan
{
public:
    Rank rankOf(sys_seconds time)
    {
        const auto spans = spansOf(time);
        const bool lastOfDay = m_days.insert(spans.day).second;
        const bool lastOfWeek = m_weeks.insert(spans.week).second;
        const bool lastOfMonth = m_months.insert(spans.month).second;
        return lastOfMonth  ? Rank::LastOfMonth
               : lastOfWeek ? Rank::LastOfWeek
               : lastOfDay  ? Rank::LastOfDay
                            : Rank::OneOfADay;
    }

private:
    std::set<qint64> m_days;
    std::set<qint64> m_weeks;
    std::set<qint64> m_months;
};

bool staysAt(Rank rank, seconds age)
{
    return age <= allFor || (age <= dailyFor && rank >= Rank::LastOfDay) ||
           (age <= weeklyFor && rank >= Rank::LastOfWeek) || rank == Rank::LastOfMonth;
}

void thinByAge(std::vector<DatedFile> &copies, sys_seconds now)
{
    std::map<QString, LastOfEachSpan> spans;
    for (auto copy = copies.rbegin(); copy != copies.rend(); ++copy) {
        copy->rank = spans[copy->of].rankOf(copy->time);
        copy->stays = staysAt(copy->rank, now - copy->time);
    }
}

void thinBySize(std::vector<DatedFile> &copies, sys_seconds now)
{
    qint64 bytes = 0;
    std::map<QString, const DatedFile *> newest;
    for (const auto &copy : copies) {
        if (copy.stays)
            bytes += copy.size;
        if (copy.time <= now)
            newest[copy.of] = &copy;
    }
    for (const auto rank : {Rank::OneOfADay, Rank::LastOfDay, Rank::LastOfWeek, Rank::LastOfMonth}) {
        for (auto &copy : copies) {
            if (bytes <= mostCopyBytes)
                return;
            if (copy.rank != rank || !copy.stays || newest[copy.of] == &copy)
                continue;
            copy.stays = false;
            bytes -= copy.size;
        }
    }
}

} // namespace

QString rollingCopyName(const QString &recordFile, const QDateTime &time)
{
    const auto stem = recordFile.left(recordFile.lastIndexOf(u'.'));
    return u"%1-%2.json"_s.arg(stem, fileNameTime(time));
}

std::optional<RollingCopy> readRollingCopyName(const QString &name)
{
    constexpr QLatin1StringView ending(".json");
    for (const auto &recordFile : RecordFileNames::all) {
        const auto stem = recordFile.chopped(ending.size());
        if (!name.startsWith(stem) || !name.endsWith(ending) || name.size() <= stem.size() + ending.size())
            continue;
        const auto written = QStringView(name).sliced(stem.size()).chopped(ending.size()).toLatin1();
        if (const auto time = readShortTime(written))
            return RollingCopy{recordFile, *time};
    }
    return std::nullopt;
}

std::vector<QString> copiesToRemove(const std::vector<ListedFile> &files, const QDateTime &now)
{
    const sys_seconds moment(seconds(now.toSecsSinceEpoch()));
    auto copies = copiesByAge(files);
    thinByAge(copies, moment);
    thinBySize(copies, moment);
    std::vector<QString> names;
    for (const auto &copy : copies) {
        if (!copy.stays)
            names.push_back(copy.name);
    }
    return names;
}
