#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

/// What one .desktop file of the freedesktop Desktop Entry specification says about an application.
struct DesktopEntry
{
    QString id;             ///< file name below applications/, '/' written '-', without ".desktop"
    QString name;           ///< in the user's language, at most 256 characters; empty where the file has none
    QStringList command;    ///< Exec split into words, field codes left out; empty where it cannot be split
    QString tryExec;        ///< the program whose presence means "installed"
    QString startupWmClass; ///< WM_CLASS its windows carry
    bool noDisplay = false;
    bool hidden = false;           ///< the entry stands for a deleted one
    bool runsInTerminal = false;   ///< Terminal=true: its window is a terminal's
    bool terminalEmulator = false; ///< among its Categories

    bool operator==(const DesktopEntry &) const = default;
};

using DesktopEntryPointer = std::shared_ptr<const DesktopEntry>;

/// The entry that `bytes` hold; no value where they are no application's entry. The id is left empty.
/// `locales` comes from localeNames().
std::optional<DesktopEntry> parseDesktopEntry(const QByteArray &bytes, const QStringList &locales);

/// The names that may stand in brackets behind a key for a POSIX locale such as "sr_RS.UTF-8@latin", the most
/// specific first; none for "C" and "POSIX".
QStringList localeNames(const QString &posixLocale);

/// The locale that messages are shown in, from LC_ALL, LC_MESSAGES or LANG.
QString messagesLocale();

/// The words of an Exec value, quotes and field codes resolved; none where a quote is left open.
QStringList splitCommand(const QString &exec);
