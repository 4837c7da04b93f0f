#pragma once

#include "FileCalls.h"
#include "Preferences.h"
#include "PreferencesDocument.h"
#include "PreferencesJournal.h"

#include <QTimer>

#include <chrono>
#include <map>
#include <set>
#include <vector>

/// Preferences as a text file that a person can read and edit while the program is closed:
///
///     # One line a value.
///     language = "ru"
///     proModeEnabled = true
///     studySeconds-2026-11-20 = 1500
///
/// The file is called `preferences`, has mode 0600 and lies in a folder of mode 0700. Each line is a
/// PreferenceLine; comments, blank lines and the order of the lines stay as they are. Where a line, or the
/// whole file, makes no sense or cannot be read, the rest counts, and the file as it is is kept under
/// `preferences.unreadable-<UTC time>` before the first save replaces it. What cannot be kept is not
/// replaced.
///
/// A value set with `Durability::Soon` goes into the file `preferences.journal` (see PreferencesJournal) and
/// with all others into `preferences` when the next value is set at once, when this object goes, or after
/// `foldDelay` at the latest, by a timer of the event loop. A save that fails is tried again with the next
/// one and by that timer; meanwhile the values are in memory and, where it can be written, in the journal.
///
/// Integers are exact. A key that has other characters than ASCII letters, digits, "-", "_" and "." is
/// refused with a log line. Only one process may use a folder at a time.
class TextPreferences : public Preferences
{
public:
    /// With the 5 % that a timer may be late, and the save itself, less than a minute.
    static constexpr std::chrono::milliseconds foldDelay = std::chrono::seconds(50);

    /// Reads the files, writes nothing. `folder` is an absolute path; it need not exist. `calls` outlives
    /// this object.
    explicit TextPreferences(const QString &folder, FileCalls &calls = FileCalls::system(),
                             std::chrono::milliseconds foldAfter = foldDelay);
    ~TextPreferences() override;
    Q_DISABLE_COPY_MOVE(TextPreferences)

    /// Not working while something is in memory only, because the last save has failed.
    Availability availability() const override;
    std::optional<PreferenceValue> value(const QString &key) const override;
    void setValue(const QString &key, const PreferenceValue &value, Durability durability) override;
    void remove(const QString &key) override;

private:
    enum class Step { KeepAside, Save, AddToJournal, DiscardJournal };

    void readFile();
    void readJournal();
    void change(const QString &key, const std::optional<PreferenceValue> &value, Durability durability);

    /// Writes the whole file, durably, and drops the journal. False where it failed.
    bool fold();
    bool keepUnreadableAside();
    bool syncGrownFolders();
    void addToJournal();
    int appendToJournal(const QByteArray &lines);

    /// Logs a failure unless the same step failed for the same reason the last time.
    void failed(Step step, const QString &reason);
    void succeeded(Step step) { m_failures.erase(step); }

    QByteArray m_folder;
    QByteArray m_path;
    FileCalls &m_calls;
    QTimer m_foldTimer;

    PreferencesDocument m_document;
    PreferencesJournal m_journal;
    std::optional<QString> m_base;   ///< state of the file on the disk; none: a failed save left that open
    bool m_mustKeepAside = false;    ///< the file on the disk holds what m_document does not
    std::set<QString> m_unfolded;    ///< keys that changed since the file was written
    std::set<QString> m_unjournaled; ///< those of them whose last change is in memory only
    std::vector<QByteArray> m_grownFolders; ///< hold a new folder that is not synced yet
    std::map<Step, QString> m_failures;     ///< why each step failed the last time it was tried
};
