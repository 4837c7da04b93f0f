// What a process shows of itself in /proc: its name, command line, environment and control group are its own
// to choose. The parts of an input are divided by 0x1e: stat, cmdline, cgroup, environ, .flatpak-info.
#include "applicationGroups.h"
#include "require.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdint>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

constexpr qint32 number = 40;

bool isShownPlainly(const QString &name)
{
    const bool plain = std::none_of(name.begin(), name.end(), [](QChar character) {
        return character.category() == QChar::Other_Control;
    });
    return plain && name.size() <= 256;
}

/// A /proc of one process.
class MadeProc
{
public:
    MadeProc() { QDir(m_folder.path()).mkpath(u"%1/root"_s.arg(number)); }

    QString path() const { return m_folder.path(); }
    void write(const QString &name, const QByteArray &bytes)
    {
        auto &written = m_written[name];
        if (written && *written == bytes)
            return; // most inputs differ from the last in one part
        written = bytes;
        QFile file(u"%1/%2/%3"_s.arg(path()).arg(number).arg(name));
        require(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size(),
                "the made /proc is written");
    }

private:
    QTemporaryDir m_folder;
    QHash<QString, std::optional<QByteArray>> m_written;
};

void checkState(const QByteArray &text)
{
    const auto state = parseProcessState(text);
    if (state)
        require(text.contains('(' + state->command + ')'), "the name stands in the text");
}

void checkCgroup(const QByteArray &text)
{
    const auto found = cgroupApplication(text);
    require(found.desktopIds.isEmpty() == found.unit.isEmpty(), "a unit names an application");
    require(found.desktopIds.size() <= 2, "as itself or behind its launcher");
}

void checkGroups(const ProcessFacts &facts)
{
    static DesktopIndex index({{}, {}, {}});
    ProcessIdentities identities;
    const WindowFacts window{number, {}, {}, {}};
    const std::vector<ApplicationGroup> groups =
        groupApplications({{number, facts}}, {window}, {}, index, identities, u":7"_s);
    require(groups.size() <= 1, "one process makes one application at most");
    for (const auto &group : groups) {
        require(group.application.processId == number && group.processes.size() == 1, "of that process");
        require(isShownPlainly(group.application.localizedName.value_or(QString())), "its name can be shown");
    }
}

} // namespace

// NOLINTNEXTLINE(readability-identifier-naming)
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static MadeProc proc;
    static const ProcFiles files(proc.path());
    const auto parts = QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)).split('\x1e');
    checkState(parts.value(0));
    checkCgroup(parts.value(2));
    proc.write(u"stat"_s, parts.value(0));
    proc.write(u"cmdline"_s, parts.value(1));
    proc.write(u"cgroup"_s, parts.value(2));
    proc.write(u"environ"_s, parts.value(3));
    proc.write(u"root/.flatpak-info"_s, parts.value(4));
    if (const auto facts = files.facts(number))
        checkGroups(*facts);
    return 0;
}
