// A preferences file, edited by hand or torn. The first byte of an input chooses between one line and a file.
#include "PreferencesDocument.h"
#include "require.h"

#include <cstdint>

using namespace Qt::StringLiterals;

namespace {

void checkLine(const QByteArray &text)
{
    const auto line = readPreferenceLine(text);
    using Kind = PreferenceLine::Kind;
    if (line.kind != Kind::Value && line.kind != Kind::Removal)
        return;
    require(isPreferenceKey(line.key), "a key is one that could be written");
    const auto value = line.kind == Kind::Value ? std::optional(line.value) : std::nullopt;
    const auto written = writePreferenceLine(line.key, value);
    require(!written.contains('\n'), "a line is one line");
    require(readPreferenceLine(written) == line, "what was written reads the same");
}

/// A change is found, changes nothing else, and what is written reads the same.
void checkFile(const QByteArray &bytes)
{
    auto document = PreferencesDocument::fromBytes(bytes);
    const auto again = PreferencesDocument::fromBytes(document.bytes());
    require(again.bytes() == document.bytes(), "what was written reads the same");
    require(again.linesNotUnderstood() == 0, "nothing that makes no sense is written");
    const auto other = document.value(u"b"_s);
    document.set(u"a"_s, PreferenceValue(qint64(7)));
    const auto changed = PreferencesDocument::fromBytes(document.bytes());
    require(changed.value(u"a"_s) == PreferenceValue(qint64(7)), "a change is kept");
    require(changed.value(u"b"_s) == other, "and nothing else is changed");
    document.set(u"a"_s, std::nullopt);
    require(!PreferencesDocument::fromBytes(document.bytes()).value(u"a"_s), "what was removed is gone");
}

} // namespace

// NOLINTNEXTLINE(readability-identifier-naming)
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0)
        return 0;
    const QByteArray bytes(reinterpret_cast<const char *>(data) + 1, qsizetype(size) - 1);
    if (data[0] % 2 == 0)
        checkLine(bytes);
    else
        checkFile(bytes);
    return 0;
}
