#pragma once

#include "preferenceLine.h"

#include <QHash>

#include <vector>

/// The text of a preferences file with the values in it. A change leaves every other line as it was written,
/// comments and blank lines in their places.
class PreferencesDocument
{
public:
    /// A line that is not understood is left out and counted. Where a key comes twice, the later line counts
    /// and the earlier one is left out. Line ends are LF or CR LF; a byte order mark at the start does not
    /// count.
    static PreferencesDocument fromBytes(const QByteArray &bytes);

    /// The whole file; each line ends in LF.
    QByteArray bytes() const;

    std::optional<PreferenceValue> value(const QString &key) const;

    /// Writes the value in its key's line, or in a new one at the end. None removes the line.
    void set(const QString &key, const std::optional<PreferenceValue> &value);

    /// How many lines of the bytes were not understood.
    int linesNotUnderstood() const { return m_linesNotUnderstood; }

private:
    struct Entry
    {
        PreferenceValue value;
        std::size_t line; ///< index in m_lines
    };

    void append(const QString &key, const PreferenceValue &value, const QByteArray &line);
    void remove(const QString &key);

    std::vector<std::optional<QByteArray>> m_lines; ///< none: removed
    QHash<QString, Entry> m_entries;
    int m_linesNotUnderstood = 0;
};
