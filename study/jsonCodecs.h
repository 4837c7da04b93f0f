#pragma once

#include "QuorvelConfig.h"
#include "Result.h"
#include "StudyCard.h"
#include "StudyTask.h"
#include "UserProgress.h"

#include <QByteArray>

#include <deque>

/// The JSON forms of the records: UTF-8, compact, keys in the order of the fields, integers exact to 64 bits.
/// Reading passes over unknown keys and fails, with a reason for the log, on anything of the wrong type.

QByteArray encodeConfig(const QuorvelConfig &config);

/// A key that is absent or null takes its default, but a missing preset version reads as 0: a file from
/// before the presets has seen none.
Result<QuorvelConfig> decodeConfig(const QByteArray &json);

/// Leaves out "lastCompletedStudyDay" where there is none.
QByteArray encodeUserProgress(const UserProgress &progress);

/// Every key but "lastCompletedStudyDay" is required.
Result<UserProgress> decodeUserProgress(const QByteArray &json);

/// Leave out what a card or a task has not. Ids are in upper case, times as "2026-11-20T20:15:30Z".
QByteArray encodeStudyCards(const std::deque<StudyCard> &cards);
QByteArray encodeStudyTasks(const std::deque<StudyTask> &tasks);

/// One record that lacks a required key or has a wrong type fails the whole list. Optional keys may be
/// missing or null.
Result<std::deque<StudyCard>> decodeStudyCards(const QByteArray &json);
Result<std::deque<StudyTask>> decodeStudyTasks(const QByteArray &json);
