#pragma once

#include <QLatin1StringView>

#include <array>

/// The files of the data folder, one for each kind of record.
namespace RecordFileNames {

inline constexpr QLatin1StringView config("config.json");
inline constexpr QLatin1StringView studyTasks("study-tasks.json");
inline constexpr QLatin1StringView studyCards("study-cards.json");
inline constexpr QLatin1StringView progress("progress.json");

inline constexpr std::array all = {config, studyTasks, studyCards, progress};

} // namespace RecordFileNames
