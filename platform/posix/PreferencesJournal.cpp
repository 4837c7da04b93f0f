#include "PreferencesJournal.h"

#include "fileSteps.h"

#include <cerrno>
#include <fcntl.h>

using namespace Qt::StringLiterals;

namespace {

constexpr auto baseKey = "journal-of"_L1;

} // namespace

PreferencesJournal::PreferencesJournal(const QByteArray &path, FileCalls &calls)
    : m_path(path)
    , m_calls(calls)
{}

PreferencesJournal::~PreferencesJournal()
{
    if (m_file >= 0)
        m_calls.close(m_file);
}

std::vector<PreferenceLine> PreferencesJournal::read(const QString &base)
{
    const auto bytes = FileSteps::read(m_calls, m_path);
    if (!bytes || !bytes.value())
        return {};
    const PreferenceLine expected = {PreferenceLine::Kind::Value, QString(baseKey), base};
    std::vector<PreferenceLine> lines;
    qsizetype start = 0;
    for (qsizetype end = bytes.value()->indexOf('\n'); end >= 0; end = bytes.value()->indexOf('\n', start)) {
        PreferenceLine line = readPreferenceLine(bytes.value()->mid(start, end - start));
        const bool holds = start == 0 ? line == expected
                                      : line.kind == PreferenceLine::Kind::Value ||
                                            line.kind == PreferenceLine::Kind::Removal;
        if (!holds)
            break;
        if (start > 0)
            lines.push_back(std::move(line));
        else
            m_base = base;
        start = end + 1;
    }
    m_length = start;
    return lines;
}

int PreferencesJournal::append(const QString &base, const QByteArray &lines)
{
    if (const int error = openFile())
        return error;
    QByteArray bytes = lines;
    if (!continues(base)) {
        m_base.reset();
        m_length = 0;
        m_torn = true;
        bytes.prepend(writePreferenceLine(baseKey, base) + '\n');
    }
    if (m_torn && m_calls.ftruncate(m_file, m_length) < 0)
        return errno;
    m_torn = true;
    if (const int error = FileSteps::writeAll(m_calls, m_file, bytes))
        return error;
    m_torn = false;
    m_base = base;
    m_length += bytes.size();
    return 0;
}

int PreferencesJournal::discard()
{
    if (m_file >= 0)
        m_calls.close(m_file);
    m_file = -1;
    m_base.reset();
    m_length = 0;
    m_torn = true;
    return m_calls.unlink(m_path.constData()) < 0 && errno != ENOENT ? errno : 0;
}

int PreferencesJournal::openFile()
{
    if (m_file >= 0)
        return 0;
    return FileSteps::open(m_calls, m_path, O_WRONLY | O_CREAT | O_APPEND | O_NOFOLLOW, m_file);
}
