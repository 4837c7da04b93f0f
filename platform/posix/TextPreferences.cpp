#include "TextPreferences.h"

#include "durableWrite.h"
#include "fileSteps.h"
#include "keepAside.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QFile>
#include <QLoggingCategory>

#include <cerrno>

using namespace Qt::StringLiterals;

namespace {

Q_LOGGING_CATEGORY(logPreferences, "quorvel.platform.posix.preferences")

/// What the journal calls the state of a preferences file: its digest, so that any edit makes another one.
QString stateOf(const Result<std::optional<QByteArray>> &file)
{
    if (!file)
        return u"unreadable"_s;
    if (!file.value())
        return u"none"_s;
    const QByteArray digest = QCryptographicHash::hash(*file.value(), QCryptographicHash::Sha256);
    return QString::fromLatin1(digest.toHex());
}

} // namespace

TextPreferences::TextPreferences(const QString &folder, FileCalls &calls, std::chrono::milliseconds foldAfter)
    : m_folder(QFile::encodeName(folder))
    , m_path(m_folder + "/preferences")
    , m_calls(calls)
    , m_journal(m_path + ".journal", calls)
{
    m_foldTimer.setSingleShot(true);
    m_foldTimer.setInterval(foldAfter);
    QObject::connect(&m_foldTimer, &QTimer::timeout, &m_foldTimer, [this] {
        if (!fold())
            m_foldTimer.start();
    });
    readFile();
    readJournal();
}

TextPreferences::~TextPreferences()
{
    if (!m_unfolded.empty())
        fold();
}

Availability TextPreferences::availability() const
{
    for (const Step step : {Step::KeepAside, Step::Save, Step::AddToJournal}) {
        const auto failure = m_failures.find(step);
        const bool inMemoryOnly = step != Step::AddToJournal || !m_unjournaled.empty();
        if (failure != m_failures.end() && inMemoryOnly)
            return Availability::missing(u"Preferences cannot be saved: %1."_s.arg(failure->second),
                                         u"Не удаётся сохранить настройки: %1."_s.arg(failure->second));
    }
    return Availability::working();
}

std::optional<PreferenceValue> TextPreferences::value(const QString &key) const
{
    return m_document.value(key);
}

void TextPreferences::setValue(const QString &key, const PreferenceValue &value, Durability durability)
{
    change(key, value, durability);
}

void TextPreferences::remove(const QString &key)
{
    change(key, std::nullopt, Durability::AtOnce);
}

void TextPreferences::readFile()
{
    const Result<std::optional<QByteArray>> file = FileSteps::read(m_calls, m_path);
    m_base = stateOf(file);
    if (!file) {
        m_mustKeepAside = true;
        qCWarning(logPreferences) << "the preferences cannot be read:" << file.reason();
        return;
    }
    m_document = PreferencesDocument::fromBytes(file.value().value_or(QByteArray()));
    if (m_document.linesNotUnderstood() > 0) {
        m_mustKeepAside = true;
        qCWarning(logPreferences) << "lines of the preferences that make no sense:"
                                  << m_document.linesNotUnderstood();
    }
}

void TextPreferences::readJournal()
{
    for (const PreferenceLine &line : m_journal.read(*m_base)) {
        const bool removal = line.kind == PreferenceLine::Kind::Removal;
        m_document.set(line.key, removal ? std::nullopt : std::optional(line.value));
        m_unfolded.insert(line.key);
    }
    if (!m_unfolded.empty())
        m_foldTimer.start();
}

void TextPreferences::change(const QString &key, const std::optional<PreferenceValue> &value,
                             Durability durability)
{
    if (!isPreferenceKey(key)) {
        qCWarning(logPreferences) << "refused a preference key:" << key;
        return;
    }
    const bool same = m_document.value(key) == value;
    if (same && (durability == Durability::Soon || !m_unfolded.contains(key)))
        return;
    if (!same)
        m_document.set(key, value);
    m_unfolded.insert(key);
    m_unjournaled.insert(key);
    if (durability == Durability::AtOnce && fold())
        return;
    addToJournal();
    if (!m_foldTimer.isActive())
        m_foldTimer.start();
}

bool TextPreferences::fold()
{
    if (!keepUnreadableAside() || !syncGrownFolders())
        return false;
    const QByteArray bytes = m_document.bytes();
    if (const Result<> written = durableWrite(m_calls, m_path, bytes); !written) {
        m_base.reset();
        failed(Step::Save, written.reason());
        return false;
    }
    succeeded(Step::Save);
    m_base = stateOf(std::optional(bytes));
    m_unfolded.clear();
    m_unjournaled.clear();
    m_foldTimer.stop();
    if (const int error = m_journal.discard())
        failed(Step::DiscardJournal, FileSteps::failure(error).reason);
    else
        succeeded(Step::DiscardJournal);
    return true;
}

bool TextPreferences::keepUnreadableAside()
{
    if (!m_mustKeepAside)
        return true;
    const QString time = QDateTime::currentDateTimeUtc().toString(u"yyyyMMdd'T'HHmmss'Z'"_s);
    const Result<QByteArray> kept = keepAside(m_calls, m_path, m_path + ".unreadable-" + time.toLatin1());
    if (kept) {
        qCWarning(logPreferences) << "the preferences as they were are kept as"
                                  << QFile::decodeName(kept.value());
    } else {
        const auto file = FileSteps::read(m_calls, m_path);
        const bool gone = file && !file.value();
        if (!gone) {
            failed(Step::KeepAside, kept.reason());
            return false;
        }
    }
    m_mustKeepAside = false;
    succeeded(Step::KeepAside);
    return true;
}

bool TextPreferences::syncGrownFolders()
{
    while (!m_grownFolders.empty()) {
        if (const int error = FileSteps::syncFolder(m_calls, m_grownFolders.back())) {
            failed(Step::Save, FileSteps::failure(error).reason);
            return false;
        }
        m_grownFolders.pop_back();
    }
    return true;
}

void TextPreferences::addToJournal()
{
    if (!m_base) // after a failed save the file may be the old or the new one
        m_base = stateOf(FileSteps::read(m_calls, m_path));
    if (!m_journal.continues(*m_base))
        m_unjournaled = m_unfolded;
    QByteArray lines;
    for (const QString &key : m_unjournaled)
        lines += writePreferenceLine(key, m_document.value(key)) + '\n';
    if (const int error = appendToJournal(lines)) {
        failed(Step::AddToJournal, FileSteps::failure(error).reason);
        return;
    }
    succeeded(Step::AddToJournal);
    m_unjournaled.clear();
}

int TextPreferences::appendToJournal(const QByteArray &lines)
{
    const int error = m_journal.append(*m_base, lines);
    if (error != ENOENT)
        return error;
    if (const int folderError = FileSteps::createFolder(m_calls, m_folder, m_grownFolders))
        return folderError;
    return m_journal.append(*m_base, lines);
}

void TextPreferences::failed(Step step, const QString &reason)
{
    QString &known = m_failures[step];
    if (known == reason)
        return;
    known = reason;
    switch (step) {
    case Step::KeepAside:
        qCWarning(logPreferences) << "the unreadable preferences cannot be kept and stay:" << reason;
        break;
    case Step::Save:
        qCWarning(logPreferences) << "the preferences cannot be saved:" << reason;
        break;
    case Step::AddToJournal:
        qCWarning(logPreferences) << "the journal of the preferences cannot be written:" << reason;
        break;
    case Step::DiscardJournal:
        qCWarning(logPreferences) << "the old journal of the preferences cannot be removed:" << reason;
        break;
    }
}
