// A record file, however broken. The first byte of an input chooses the kind of record, the rest is the file.
#include "jsonCodecs.h"
#include "require.h"

#include <cstdint>

namespace {

/// What can be read is written so that it reads the same, and is written the same then.
template <typename Record>
void check(const QByteArray &json, Result<Record> (*decode)(const QByteArray &),
           QByteArray (*encode)(const Record &))
{
    const auto record = decode(json);
    if (!record) {
        require(!record.reason().isEmpty(), "a failure has a reason");
        return;
    }
    const auto written = encode(record.value());
    const auto again = decode(written);
    require(again.ok(), "what was written can be read");
    require(again.value() == record.value(), "what was written reads the same");
    require(encode(again.value()) == written, "the same is written the same");
}

} // namespace

// The name is libFuzzer's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) // NOLINT(readability-identifier-naming)
{
    if (size == 0)
        return 0;
    const QByteArray json(reinterpret_cast<const char *>(data) + 1, qsizetype(size) - 1);
    switch (data[0] % 4) {
    case 0:
        check(json, decodeConfig, encodeConfig);
        break;
    case 1:
        check(json, decodeUserProgress, encodeUserProgress);
        break;
    case 2:
        check(json, decodeStudyCards, encodeStudyCards);
        break;
    default:
        check(json, decodeStudyTasks, encodeStudyTasks);
    }
    return 0;
}
