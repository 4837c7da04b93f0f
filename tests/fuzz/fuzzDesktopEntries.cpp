// Desktop entries and other key files, as any program of the user may have put them there. The first byte of
// an input chooses how the rest is read.
#include "DesktopEntry.h"
#include "keyFiles.h"
#include "programCall.h"
#include "require.h"

#include <algorithm>
#include <cstdint>

using namespace Qt::StringLiterals;

namespace {

bool isShownPlainly(const QString &name)
{
    const bool plain = std::none_of(name.begin(), name.end(), [](QChar character) {
        return character.category() == QChar::Other_Control;
    });
    return plain && name.size() <= 256;
}

void checkCommand(const QStringList &command)
{
    const auto call = effectiveCall(command);
    require(call.arguments.size() <= 1 || !command.isEmpty(), "what is run comes from the words");
    require(call.arguments.size() < qMax(command.size(), qsizetype(1)) || call.program != command.value(0),
            "arguments are words behind the program");
    if (!call.program.isEmpty() && !call.script)
        require(!isInterpreter(baseName(call.program)), "an interpreter alone is no program");
}

void checkEntry(const QByteArray &bytes)
{
    const auto entry = parseDesktopEntry(bytes, {u"sr_RS@latin"_s, u"sr_RS"_s, u"sr"_s});
    if (!entry)
        return;
    require(entry->id.isEmpty(), "the file does not say its id");
    require(isShownPlainly(entry->name), "a name can be shown");
    checkCommand(entry->command);
}

/// What is added stands there, and all that was there stays.
void checkKeyFile(const QByteArray &bytes)
{
    const QByteArray group = "Default Applications";
    const QByteArray key = "x-scheme-handler/made-up";
    const auto before = keyFileValue(bytes, group, key);
    if (before)
        require(keyFileHasKey(bytes, key), "a key that has a value is there");
    const auto longer = keyFileWithLine(bytes, group, key + "=one.desktop;");
    require(keyFileValue(longer, group, key) == "one.desktop;", "what was added is found first");
    require(longer.size() > bytes.size(), "nothing is taken away");
    if (!before && !bytes.contains(key))
        require(keyFileHasKey(longer, key) && !keyFileHasKey(bytes, key), "it was not there before");
}

/// A program's path written into an entry is read from it again.
void checkPath(const QByteArray &bytes)
{
    const auto path = u'/' + QString::fromUtf8(bytes);
    if (path.contains(u'\0') || path.contains(QChar::ReplacementCharacter))
        return;
    const auto entry =
        parseDesktopEntry("[Desktop Entry]\nType=Application\nExec=" + execValue(path) + '\n', {});
    require(entry && !entry->command.isEmpty(), "an entry of our own can be read");
    const bool behindEnv = entry->command.size() > 1 && entry->command[0] == u"env";
    require(entry->command[behindEnv ? 1 : 0] == path, "and starts that program");
}

} // namespace

// NOLINTNEXTLINE(readability-identifier-naming)
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0)
        return 0;
    const QByteArray bytes(reinterpret_cast<const char *>(data) + 1, qsizetype(size) - 1);
    switch (data[0] % 4) {
    case 0:
        checkEntry(bytes);
        break;
    case 1:
        checkCommand(splitCommand(QString::fromUtf8(bytes)));
        break;
    case 2:
        checkKeyFile(bytes);
        break;
    default:
        checkPath(bytes);
    }
    return 0;
}
