#include "settingsDrafts.h"

#include "textLists.h"

#include <QStringView>

#include <algorithm>
#include <charconv>
#include <optional>

namespace {

/// A sign or none, then digits 0 to 9, in signed 64 bits; white space at the ends does not count.
std::optional<qint64> integerIn(const QString &draft)
{
    const auto text = QStringView(draft).trimmed();
    const bool isSigned = text.startsWith(u'+') || text.startsWith(u'-');
    const auto digits = text.mid(isSigned ? 1 : 0);
    const auto isDigit = [](QChar unit) { return unit >= u'0' && unit <= u'9'; };
    if (digits.isEmpty() || !std::all_of(digits.begin(), digits.end(), isDigit))
        return std::nullopt;
    const auto bytes = (text.startsWith(u'+') ? digits : text).toLatin1();
    qint64 number = 0;
    const auto read = std::from_chars(bytes.cbegin(), bytes.cend(), number);
    return read.ec == std::errc() ? std::optional(number) : std::nullopt;
}

qint64 numberFrom(const QString &draft, qint64 inForce, qint64 lowest, qint64 highest)
{
    return std::clamp(integerIn(draft).value_or(inForce), lowest, highest);
}

bool isLineBreak(QChar unit)
{
    return (unit >= u'\n' && unit <= u'\r') || unit == u'\x85' || unit == QChar::LineSeparator ||
           unit == QChar::ParagraphSeparator;
}

} // namespace

SettingsDrafts draftsFrom(const QuorvelConfig &config)
{
    return {
        .studyMinutesText = QString::number(config.studyMinutes),
        .breakMinutesText = QString::number(config.breakMinutes),
        .maxIdleSecondsText = QString::number(config.maxIdleSeconds),
        .requiredProofsText = QString::number(config.requiredProofsToUnlock),
        .blockedAppsText = config.blockedApps.join(u'\n'),
        .blockedDomainsText = config.blockedDomains.join(u'\n'),
        .allowedStudyDomainsText = config.allowedStudyDomains.join(u'\n'),
        .allowedStudyAppsText = config.allowedStudyApps.join(u'\n'),
    };
}

QuorvelConfig configFrom(const SettingsDrafts &drafts, QuorvelConfig config)
{
    config.studyMinutes = numberFrom(drafts.studyMinutesText, config.studyMinutes, 1, 240);
    config.breakMinutes = numberFrom(drafts.breakMinutesText, config.breakMinutes, 1, 240);
    config.maxIdleSeconds = numberFrom(drafts.maxIdleSecondsText, config.maxIdleSeconds, 15, 3600);
    config.requiredProofsToUnlock =
        numberFrom(drafts.requiredProofsText, config.requiredProofsToUnlock, 0, 20);
    config.blockedApps = parseEditorLines(drafts.blockedAppsText);
    config.blockedDomains = parseEditorLines(drafts.blockedDomainsText);
    config.allowedStudyDomains = parseEditorLines(drafts.allowedStudyDomainsText);
    config.allowedStudyApps = parseEditorLines(drafts.allowedStudyAppsText);
    return config;
}

QStringList parseEditorLines(const QString &text)
{
    QStringList entries;
    auto lineStart = text.cbegin();
    while (true) {
        const auto lineEnd = std::find_if(lineStart, text.cend(), isLineBreak);
        const auto entry = QStringView(lineStart, lineEnd).trimmed();
        if (!entry.isEmpty())
            entries.append(entry.toString());
        if (lineEnd == text.cend())
            return removingDuplicates(entries);
        lineStart = lineEnd + 1;
    }
}
