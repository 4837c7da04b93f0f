#include "tabRows.h"

#include "browserAddress.h"

#include <QStringList>

#include <algorithm>
#include <optional>

namespace {

bool breaksLine(QChar letter)
{
    const auto code = letter.unicode();
    return (code >= u'\n' && code <= u'\r') || code == u'\u0085' || code == u'\u2028' || code == u'\u2029';
}

QStringList splitLines(const QString &text)
{
    QStringList lines;
    auto begin = text.begin();
    while (true) {
        const auto end = std::find_if(begin, text.end(), breaksLine);
        lines.append(text.mid(begin - text.begin(), end - begin));
        if (end == text.end())
            return lines;
        begin = end + 1;
    }
}

std::optional<qint64> readNumber(const QString &text)
{
    // QString would also take white space around the number.
    const bool isSigned = text.startsWith(u'+') || text.startsWith(u'-');
    const auto isDigit = [](QChar letter) { return letter >= u'0' && letter <= u'9'; };
    if (!std::all_of(text.begin() + (isSigned ? 1 : 0), text.end(), isDigit))
        return std::nullopt;
    bool fits = false;
    const auto number = text.toLongLong(&fits, 10);
    return fits ? std::optional(number) : std::nullopt;
}

} // namespace

std::vector<BrowserTab> readTabRows(const QString &output, const QString &browser)
{
    std::vector<BrowserTab> tabs;
    for (const auto &line : splitLines(output)) {
        const auto fields = line.split(u'\t');
        if (fields.size() != 3)
            continue;
        const auto window = readNumber(fields.at(0));
        const auto tab = readNumber(fields.at(1));
        if (window && tab && isBrowserAddress(fields.at(2)))
            tabs.push_back({browser, *window, *tab, fields.at(2)});
    }
    return tabs;
}
