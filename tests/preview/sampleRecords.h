#pragma once

#include "AppLanguage.h"
#include "StudyCard.h"
#include "StudyTask.h"
#include "UserProgress.h"

#include <deque>

/// The made-up records of the pictures: a student who prepares for an exam on derivatives.
namespace SampleRecords {

/// "Derivatives" in the language.
QString topic(AppLanguage language);

/// Seven cards, five of them of topic().
std::deque<StudyCard> cards(AppLanguage language);

/// Three open tasks and two that are done.
std::deque<StudyTask> tasks(AppLanguage language);

/// 447 XP, on the fourth day in a row.
UserProgress progress();

/// One card whose question has 300 letters, before `count` others that match every topic it has.
std::deque<StudyCard> manyLongCards(AppLanguage language, int count);

/// A title of 300 letters.
QString longText(AppLanguage language, int letters);

} // namespace SampleRecords
