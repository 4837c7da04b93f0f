#include "DesktopEntry.h"

#include "shownName.h"

using namespace Qt::StringLiterals;

namespace {

QString unescaped(const QString &value)
{
    QString result;
    result.reserve(value.size());
    for (qsizetype at = 0; at < value.size(); ++at) {
        const bool escape = value[at] == u'\\' && at + 1 < value.size();
        if (!escape) {
            result += value[at];
            continue;
        }
        switch (value[++at].unicode()) {
        case u's':
            result += u' ';
            break;
        case u'n':
            result += u'\n';
            break;
        case u't':
            result += u'\t';
            break;
        case u'r':
            result += u'\r';
            break;
        case u'\\':
            result += u'\\';
            break;
        default: // not an escape of this format: Exec has more of its own
            result += u'\\';
            result += value[at];
        }
    }
    return result;
}

/// What stands between the words of a command. A no-break space is none: it may stand in a path.
bool isSeparator(QChar character)
{
    return character == u' ' || character == u'\t' || character == u'\n' || character == u'\r';
}

bool isTrue(const QString &value)
{
    return value == "true"_L1 || value == "1"_L1;
}

/// Takes the values of one group as they come and keeps of each translated key the best one.
class EntryReader
{
public:
    explicit EntryReader(const QStringList &locales)
        : m_locales(locales)
        , m_nameRank(locales.size() + 1)
    {}

    void take(const QString &key, const QString &value)
    {
        if (key.startsWith("Name"_L1))
            takeName(key, value);
        else if (key == "Type"_L1)
            m_type = value;
        else if (key == "Exec"_L1)
            m_entry.command = splitCommand(unescaped(value));
        else if (key == "TryExec"_L1)
            m_entry.tryExec = unescaped(value);
        else if (key == "StartupWMClass"_L1)
            m_entry.startupWmClass = unescaped(value);
        else
            takeFlag(key, value);
    }

    std::optional<DesktopEntry> entry() const
    {
        if (m_type != "Application"_L1)
            return std::nullopt;
        return m_entry;
    }

private:
    void takeName(const QString &key, const QString &value)
    {
        auto rank = m_locales.size();
        if (key != "Name"_L1) {
            if (!key.startsWith("Name["_L1) || !key.endsWith(u']'))
                return;
            rank = m_locales.indexOf(key.sliced(5, key.size() - 6));
        }
        if (rank < 0 || rank >= m_nameRank)
            return;
        m_nameRank = rank;
        m_entry.name = shownName(unescaped(value));
    }
    void takeFlag(const QString &key, const QString &value)
    {
        if (key == "NoDisplay"_L1)
            m_entry.noDisplay = isTrue(value);
        else if (key == "Hidden"_L1)
            m_entry.hidden = isTrue(value);
        else if (key == "Terminal"_L1)
            m_entry.runsInTerminal = isTrue(value);
        else if (key == "Categories"_L1)
            m_entry.terminalEmulator = value.split(u';').contains("TerminalEmulator"_L1);
    }

    QStringList m_locales;
    qsizetype m_nameRank; ///< of the name kept so far, 0 the best
    QString m_type;
    DesktopEntry m_entry;
};

} // namespace

std::optional<DesktopEntry> parseDesktopEntry(const QByteArray &bytes, const QStringList &locales)
{
    EntryReader reader(locales);
    bool inGroup = false;
    for (const auto &rawLine : bytes.split('\n')) {
        const auto line = rawLine.trimmed();
        if (line.isEmpty() || line.startsWith('#'))
            continue;
        if (line.startsWith('[')) {
            if (inGroup)
                break; // actions and the like follow
            inGroup = line == "[Desktop Entry]";
            continue;
        }
        const auto equals = line.indexOf('=');
        if (!inGroup || equals <= 0)
            continue;
        reader.take(QString::fromUtf8(line.first(equals).trimmed()),
                    QString::fromUtf8(line.sliced(equals + 1).trimmed()));
    }
    return reader.entry();
}

QStringList localeNames(const QString &posixLocale)
{
    const auto at = posixLocale.indexOf(u'@');
    const auto modifier = at < 0 ? QString() : posixLocale.sliced(at);
    auto place = at < 0 ? posixLocale : posixLocale.first(at);
    place = place.section(u'.', 0, 0);
    const auto language = place.section(u'_', 0, 0);
    if (language.isEmpty() || language == "C"_L1 || language == "POSIX"_L1)
        return {};
    QStringList names;
    if (place != language) {
        if (!modifier.isEmpty())
            names << place + modifier;
        names << place;
    }
    if (!modifier.isEmpty())
        names << language + modifier;
    names << language;
    return names;
}

QString messagesLocale()
{
    for (const auto *variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const auto value = qEnvironmentVariable(variable);
        if (!value.isEmpty())
            return value;
    }
    return {};
}

QStringList splitCommand(const QString &exec)
{
    QStringList words;
    QString word;
    bool started = false;
    bool quoted = false;
    for (qsizetype at = 0; at < exec.size(); ++at) {
        const auto character = exec[at];
        const bool more = at + 1 < exec.size();
        if (character == u'"') {
            quoted = !quoted;
            started = true;
        } else if (character == u'\\' && more) {
            word += exec[++at];
            started = true;
        } else if (character == u'%' && more) {
            if (exec[++at] == u'%')
                word += u'%';
        } else if (!quoted && isSeparator(character)) {
            if (!word.isEmpty() || started)
                words << word;
            word.clear();
            started = false;
        } else {
            word += character;
        }
    }
    if (quoted)
        return {};
    if (!word.isEmpty() || started)
        words << word;
    return words;
}
