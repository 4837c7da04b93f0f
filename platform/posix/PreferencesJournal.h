#pragma once

#include "FileCalls.h"
#include "preferenceLine.h"

#include <vector>

/// The values that were set since the preferences file was last written, each handed to the kernel as a line
/// at the end of a second file: they outlive the program without a sync.
///
/// The first line, `journal-of = "..."`, names the state of the preferences file to which the values were
/// added. Beside a file in any other state, written later or edited by hand, the journal counts for nothing.
class PreferencesJournal
{
public:
    /// `path` is in the file system's encoding; `calls` outlives this object. Touches no file.
    PreferencesJournal(const QByteArray &path, FileCalls &calls);
    ~PreferencesJournal();
    Q_DISABLE_COPY_MOVE(PreferencesJournal)

    /// The values and removals, in the order of writing, that were added to a preferences file in the state
    /// `base`. Ends before the first line that is torn or makes no sense. append() goes on after it.
    std::vector<PreferenceLine> read(const QString &base);

    /// Whether append() goes on with the lines that are there, rather than beginning anew.
    bool continues(const QString &base) const { return m_base == base; }

    /// Adds whole lines, each with its LF. Begins anew, with these lines only, where the journal does not
    /// continue `base`. Makes no sync and takes no lock. The folder is there. Returns an `errno` or 0; after
    /// a failure some of the lines may have been added.
    int append(const QString &base, const QByteArray &lines);

    /// Removes the file: the preferences file has taken up its values. Returns an `errno` or 0.
    int discard();

private:
    int openFile();

    QByteArray m_path;
    FileCalls &m_calls;
    int m_file = -1;
    std::optional<QString> m_base; ///< of the lines in the file; none: they do not count
    qint64 m_length = 0;           ///< bytes of the file up to the end of its last good line
    bool m_torn = true;            ///< the file may be longer than that
};
