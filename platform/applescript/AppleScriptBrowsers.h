#pragma once

#include "BrowserScripting.h"

/// Browsers through AppleScript, where the operating system has it. Each question is one run of the program
/// that plays scripts; macOS itself bounds how long a browser may take to answer.
class AppleScriptBrowsers : public BrowserScripting
{
public:
    /// `program` is the absolute path of what plays scripts.
    explicit AppleScriptBrowsers(QString program = QStringLiteral("/usr/bin/osascript"));

    Availability availability() const override;
    std::vector<BrowserTab> allTabs(const QString &browser) override;
    std::optional<QString> frontTabURL(const QString &browser) override;
    void closeTabs(const QString &browser, const std::vector<BrowserTab> &tabs) override;
    std::vector<QString> furtherBrowsers() const override { return {}; }

    /// What the script printed. None where the program cannot be started, does not end with 0 or is killed,
    /// and where the output is not UTF-8. Waits for its end.
    std::optional<QString> runAppleScript(const QString &source) const;

private:
    QString m_program;
};
