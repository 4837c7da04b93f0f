#include "recordText.h"

#include <algorithm>
#include <chrono>

namespace {

constexpr qint64 secondsPerDay = 24 * 60 * 60;

constexpr qint64 firstSecondOf(int year)
{
    using namespace std::chrono;
    return sys_days{std::chrono::year(year) / January / 1}.time_since_epoch().count() * secondsPerDay;
}

constexpr qint64 firstMoment = firstSecondOf(1);
constexpr qint64 lastMoment = firstSecondOf(10'000) - 1;

char *writeDigits(char *to, unsigned number, int count)
{
    for (int place = count - 1; place >= 0; --place) {
        to[place] = char('0' + number % 10);
        number /= 10;
    }
    return to + count;
}

char *writeHex(char *to, quint64 number, int count)
{
    for (int place = count - 1; place >= 0; --place) {
        to[place] = "0123456789ABCDEF"[number & 0xF];
        number >>= 4;
    }
    return to + count;
}

/// Takes a text apart from its start and remembers whether all was as it should be.
class Pieces
{
public:
    explicit Pieces(std::string_view text)
        : m_rest(text)
    {}

    bool done() const { return m_good && m_rest.empty(); }

    int digits(int count)
    {
        int number = 0;
        for (; count > 0; --count) {
            const int digit = next() - '0';
            m_good = m_good && digit >= 0 && digit <= 9;
            number = m_good ? number * 10 + digit : 0;
        }
        return number;
    }

    quint64 hex(int count)
    {
        quint64 number = 0;
        for (; count > 0; --count) {
            const char c = next();
            const int digit = c >= '0' && c <= '9'   ? c - '0'
                              : c >= 'a' && c <= 'f' ? c - 'a' + 10
                              : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                                     : -1;
            m_good = m_good && digit >= 0;
            number = m_good ? number << 4 | quint64(digit) : 0;
        }
        return number;
    }

    char next()
    {
        if (m_rest.empty()) {
            m_good = false;
            return 0;
        }
        const char c = m_rest.front();
        m_rest.remove_prefix(1);
        return c;
    }

    void expect(char c)
    {
        if (next() != c)
            m_good = false;
    }

    void require(bool holds) { m_good = m_good && holds; }

private:
    std::string_view m_rest;
    bool m_good = true;
};

/// Seconds that the local time is ahead of UTC.
int readOffset(Pieces &pieces)
{
    const char sign = pieces.next();
    if (sign == 'Z')
        return 0;
    pieces.require(sign == '+' || sign == '-');
    const int hours = pieces.digits(2);
    pieces.expect(':');
    const int minutes = pieces.digits(2);
    pieces.require(hours < 24 && minutes < 60);
    return (sign == '-' ? -1 : 1) * (hours * 60 + minutes) * 60;
}

} // namespace

char *writeRecordTime(char *to, const QDateTime &time)
{
    using namespace std::chrono;
    const qint64 moment =
        time.isValid() ? std::clamp(time.toSecsSinceEpoch(), firstMoment, lastMoment) : qint64{0};
    const auto day = floor<days>(sys_seconds{seconds(moment)});
    const year_month_day date(day);
    const auto inDay = unsigned(moment - day.time_since_epoch().count() * secondsPerDay);
    to = writeDigits(to, unsigned(int(date.year())), 4);
    *to++ = '-';
    to = writeDigits(to, unsigned(date.month()), 2);
    *to++ = '-';
    to = writeDigits(to, unsigned(date.day()), 2);
    *to++ = 'T';
    to = writeDigits(to, inDay / 3600, 2);
    *to++ = ':';
    to = writeDigits(to, inDay / 60 % 60, 2);
    *to++ = ':';
    to = writeDigits(to, inDay % 60, 2);
    *to++ = 'Z';
    return to;
}

std::optional<QDateTime> readRecordTime(std::string_view text)
{
    using namespace std::chrono;
    Pieces pieces(text);
    const int year = pieces.digits(4);
    pieces.expect('-');
    const int month = pieces.digits(2);
    pieces.expect('-');
    const int day = pieces.digits(2);
    pieces.expect('T');
    const int hour = pieces.digits(2);
    pieces.expect(':');
    const int minute = pieces.digits(2);
    pieces.expect(':');
    const int second = pieces.digits(2);
    const int offset = readOffset(pieces);
    const year_month_day date(std::chrono::year(year) / month / day);
    if (!pieces.done() || !date.ok() || hour > 23 || minute > 59 || second > 59)
        return std::nullopt;
    const qint64 moment = sys_days(date).time_since_epoch().count() * secondsPerDay +
                          (hour * 60 + minute) * 60 + second - offset;
    if (moment < firstMoment || moment > lastMoment)
        return std::nullopt;
    return QDateTime::fromSecsSinceEpoch(moment, Qt::UTC);
}

char *writeRecordId(char *to, const QUuid &id)
{
    to = writeHex(to, id.data1, 8);
    *to++ = '-';
    to = writeHex(to, id.data2, 4);
    *to++ = '-';
    to = writeHex(to, id.data3, 4);
    *to++ = '-';
    for (int place = 0; place < 8; ++place) {
        if (place == 2)
            *to++ = '-';
        to = writeHex(to, id.data4[place], 2);
    }
    return to;
}

std::optional<QUuid> readRecordId(std::string_view text)
{
    Pieces pieces(text);
    QUuid id;
    id.data1 = uint(pieces.hex(8));
    pieces.expect('-');
    id.data2 = ushort(pieces.hex(4));
    pieces.expect('-');
    id.data3 = ushort(pieces.hex(4));
    pieces.expect('-');
    for (int place = 0; place < 8; ++place) {
        if (place == 2)
            pieces.expect('-');
        id.data4[place] = uchar(pieces.hex(2));
    }
    return pieces.done() ? std::optional(id) : std::nullopt;
}

QString readRecordString(std::string_view utf8)
{
    // QString::fromUtf8() drops a mark at the start.
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    QString marks;
    for (; utf8.starts_with(mark); utf8.remove_prefix(mark.size()))
        marks += QChar(QChar::ByteOrderMark);
    const auto rest = QString::fromUtf8(utf8.data(), qsizetype(utf8.size()));
    return marks.isEmpty() ? rest : marks + rest;
}
