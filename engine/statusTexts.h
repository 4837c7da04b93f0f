#pragma once

#include "AppLanguage.h"
#include "QuorvelController.h"

/// The status and readiness texts as rules of plain values. Counts are whole numbers of cards; `required` is
/// the number of card proofs that the settings ask for and `matching` the number of cards on the current
/// topic.
namespace StatusTexts {

using Mode = QuorvelController::Mode;

QString modeName(Mode mode, AppLanguage language);

/// Whether applications and tabs are closed in that mode.
bool blocks(Mode mode);

bool canStartStudy(Mode mode, qint64 required, qint64 matching);
/// Whether a session would need more cards of the current topic than there are.
bool lacksCards(qint64 required, qint64 matching);

QString startReadiness(Mode mode, qint64 required, qint64 matching, AppLanguage language);
QString studyStart(qint64 required, AppLanguage language);
QString proofWait(qint64 required, qint64 proofs, AppLanguage language);
QString proofProgress(qint64 required, qint64 proofs, AppLanguage language);
QString proofPolicy(qint64 required, AppLanguage language);

/// What the cards are asked for: how many count, or that none has to.
QString cardProof(qint64 required, AppLanguage language);
/// How many cards there are and how many of them match the current topic.
QString cardBank(qint64 total, qint64 matching, AppLanguage language);

QString primaryTimerTitle(Mode mode, AppLanguage language);

/// Part of the session or break that is over, 0 to 1. `left` and `total` in seconds; a total below 1 counts
/// as 1.
double sessionProgress(qint64 left, qint64 total);

/// `status` is the present status line, which stands as it is while a session runs.
QString focusSubtitle(Mode mode, qint64 required, qint64 matching, const QString &status,
                      AppLanguage language);

/// What could not be saved, by the English names of the record files, with the reasons; empty where all was.
QString unsaved(const QMap<QString, QString> &failedSaves, AppLanguage language);

QString blockedAppSummary(Mode mode, const QStringList &blockedRunningAppNames, AppLanguage language);

QString counting(const QString &proofProgress, const QString &activeAppName, AppLanguage language);

} // namespace StatusTexts
