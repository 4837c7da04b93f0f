#include "AppleScriptBrowsers.h"

#include "appleScripts.h"
#include "browserAddress.h"
#include "tabRows.h"

#include <QFileInfo>
#include <QLoggingCategory>
#include <QProcess>
#include <QStringDecoder>

using namespace Qt::StringLiterals;

namespace {

// A browser that refuses fails at every look, so its failures are told only to who asks for them.
Q_LOGGING_CATEGORY(logAppleScript, "quorvel.platform.applescript", QtInfoMsg)

std::optional<QString> decodeUtf8(const QByteArray &bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(bytes);
    return decoder.hasError() ? std::nullopt : std::optional(text);
}

} // namespace

AppleScriptBrowsers::AppleScriptBrowsers(QString program)
    : m_program(std::move(program))
{}

Availability AppleScriptBrowsers::availability() const
{
    const QFileInfo program(m_program);
    if (program.isFile() && program.isExecutable())
        return Availability::working();
    return Availability::missing(
        u"Browser tabs cannot be seen: %1, which runs AppleScript, is missing."_s.arg(m_program),
        u"Вкладки браузера не видны: нет программы %1, которая выполняет AppleScript."_s.arg(m_program));
}

std::vector<BrowserTab> AppleScriptBrowsers::allTabs(const QString &browser)
{
    const auto output = runAppleScript(allTabsScript(browser));
    return output ? readTabRows(*output, browser) : std::vector<BrowserTab>();
}

std::optional<QString> AppleScriptBrowsers::frontTabURL(const QString &browser)
{
    const auto address = runAppleScript(frontTabScript(browser)).value_or(QString()).trimmed();
    return isBrowserAddress(address) ? std::optional(address) : std::nullopt;
}

void AppleScriptBrowsers::closeTabs(const QString &browser, const std::vector<BrowserTab> &tabs)
{
    if (!tabs.empty())
        runAppleScript(closeTabsScript(tabs, browser)); // the next look sees what is still there
}

std::optional<QString> AppleScriptBrowsers::runAppleScript(const QString &source) const
{
    // QProcess reads both pipes while it waits, so a script may print more than a pipe holds.
    QProcess process;
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(m_program, {u"-e"_s, source});
    if (!process.waitForFinished(-1)) {
        qCDebug(logAppleScript) << m_program << "cannot be started:" << process.errorString();
        return std::nullopt;
    }
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        qCDebug(logAppleScript) << "a script failed with" << process.exitStatus() << process.exitCode();
        return std::nullopt;
    }
    const auto text = decodeUtf8(process.readAllStandardOutput());
    if (!text)
        qCDebug(logAppleScript) << "a script printed what is not UTF-8";
    return text;
}
