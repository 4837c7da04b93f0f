#pragma once

#include "DesktopEntry.h"
#include "programCall.h"

#include <QHash>

#include <chrono>
#include <optional>
#include <set>
#include <utility>
#include <vector>

/// Where desktop entries and programs are looked for, and the language of names.
struct DesktopPlaces
{
    QStringList dataFolders;    ///< the folders that hold "applications/", the most important first
    QStringList programFolders; ///< as in PATH
    QString locale;             ///< POSIX, as messagesLocale() gives it

    /// The user's own, from XDG_DATA_HOME, XDG_DATA_DIRS, PATH and the locale variables.
    static DesktopPlaces ofThisUser();
};

/// The desktop entries of this system and the ways to find the one that a program or a window belongs to.
class DesktopIndex
{
public:
    using FolderDate = std::optional<std::pair<qint64, qint64>>; ///< of its last change, in s and ns

    explicit DesktopIndex(DesktopPlaces places);

    /// Reads the entries again where a folder of theirs has changed; looks at the folders at most each 10 s
    /// of `now`, any stopwatch. Tells whether entries were read. The first call always reads.
    bool refresh(std::chrono::nanoseconds now);

    DesktopEntryPointer byId(const QString &id) const;

    /// The entry that says its program is the very file `call` runs; the arguments tell several apart.
    DesktopEntryPointer byProgram(const ProgramCall &call) const;

    /// The entry whose program has the same file name. Weaker: for wrapper scripts that run a program of
    /// their own name from elsewhere.
    DesktopEntryPointer byProgramName(const ProgramCall &call) const;

    /// The entry whose windows carry that WM_CLASS, or that is named after it.
    DesktopEntryPointer byWindowClass(const QString &instance, const QString &className) const;

    /// The entry whose StartupWMClass or id, in whichever case, is `name`.
    DesktopEntryPointer byLooseName(const QString &name) const;

private:
    struct Program
    {
        DesktopEntryPointer entry;
        ProgramCall call;
    };
    struct Folder
    {
        QString path;
        FolderDate changed; ///< none for a missing one
        bool doubtful;      ///< must be read again whatever its date
    };
    struct Reading;
    using Programs = QMultiHash<QString, Program>;

    bool foldersChanged() const;
    void readAll();
    void readFolder(const QString &folder, const QString &prefix, int depth, Reading &reading);
    void readEntry(const QString &path, const QString &id, Reading &reading);
    void addProgram(const DesktopEntryPointer &entry, const ProgramCall &call);
    void indexEntries();
    QString located(const QString &program) const;
    static DesktopEntryPointer best(const Programs &programs, const QString &key, const ProgramCall &call);

    DesktopPlaces m_places;
    QStringList m_locales;
    std::vector<Folder> m_folders;
    std::set<std::pair<quint64, quint64>> m_visited; ///< device and number of each: links may run in circles
    std::optional<std::chrono::nanoseconds> m_lookedAt;
    QHash<QString, DesktopEntryPointer> m_byId; ///< a hidden entry stays in, to hide those behind it
    Programs m_byPath;
    Programs m_byName;
    QHash<QString, DesktopEntryPointer> m_byWindowClass;
    QHash<QString, DesktopEntryPointer> m_byLooseName; ///< in lower case
};
