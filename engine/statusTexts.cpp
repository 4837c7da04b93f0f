#include "statusTexts.h"

#include "L10n.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

QString number(qint64 value)
{
    return QString::number(value);
}

/// The English ending of a counted noun.
QString plural(qint64 count)
{
    return count == 1 ? QString() : u"s"_s;
}

} // namespace

QString StatusTexts::modeName(Mode mode, AppLanguage language)
{
    switch (mode) {
    case Mode::Ready:
        return L10n::t(u"ready", language);
    case Mode::Locked:
        return L10n::t(u"locked", language);
    case Mode::Studying:
        return L10n::t(u"studying", language);
    case Mode::BreakTime:
        return L10n::t(u"break", language);
    }
    return {};
}

bool StatusTexts::blocks(Mode mode)
{
    return mode == Mode::Studying || mode == Mode::Locked;
}

bool StatusTexts::canStartStudy(Mode mode, qint64 required, qint64 matching)
{
    return mode != Mode::Studying && !lacksCards(required, matching);
}

bool StatusTexts::lacksCards(qint64 required, qint64 matching)
{
    return required > 0 && matching < required;
}

QString StatusTexts::startReadiness(Mode mode, qint64 required, qint64 matching, AppLanguage language)
{
    if (mode == Mode::Studying)
        return L10n::t(u"study_already_running", language);
    if (mode == Mode::BreakTime)
        return L10n::t(u"break_active_ready", language);
    if (required == 0)
        return inLanguage(language, u"Ready. Proof is off, so the timer alone unlocks a break."_s,
                          u"Готово. Пруф выключен, отдых откроет только таймер."_s);
    if (!lacksCards(required, matching))
        return inLanguage(language,
                          u"Ready. "_s + number(matching) + u" matching card"_s + plural(matching) +
                              u" available."_s,
                          u"Готово. Подходящих карточек: "_s + number(matching) + u"."_s);
    const auto missing = required - matching;
    return inLanguage(language,
                      u"Need "_s + number(missing) + u" more matching card"_s + plural(missing) +
                          u", or set card proofs to 0."_s,
                      u"Не хватает карточек: "_s + number(missing) + u". Или поставь пруфы 0."_s);
}

QString StatusTexts::studyStart(qint64 required, AppLanguage language)
{
    if (required > 0)
        return inLanguage(language,
                          u"Study timer is running. Solve "_s + number(required) + u" unique card"_s +
                              plural(required) + u" to unlock a break."_s,
                          u"Учебный таймер идёт. Реши уникальных карточек: "_s + number(required) +
                              u", чтобы открыть отдых."_s);
    return inLanguage(language,
                      u"Study timer is running. Proofs are disabled; the timer alone unlocks a break."_s,
                      u"Учебный таймер идёт. Пруфы выключены; отдых откроет только таймер."_s);
}

QString StatusTexts::proofWait(qint64 required, qint64 proofs, AppLanguage language)
{
    const auto missing = required > 0 ? required - proofs : 0;
    if (missing > 0)
        return inLanguage(language,
                          u"Timer done. Solve "_s + number(missing) + u" more unique card"_s +
                              plural(missing) + u" to unlock break."_s,
                          u"Таймер завершён. Реши ещё карточек: "_s + number(missing) +
                              u", чтобы открыть отдых."_s);
    return inLanguage(language, u"Timer done. Break is ready."_s, u"Таймер завершён. Отдых готов."_s);
}

QString StatusTexts::proofProgress(qint64 required, qint64 proofs, AppLanguage language)
{
    return required > 0 ? number(proofs) + u"/"_s + number(required) : L10n::t(u"off", language);
}

QString StatusTexts::proofPolicy(qint64 required, AppLanguage language)
{
    if (required > 0)
        return inLanguage(language, number(required) + u" card"_s + plural(required),
                          u"Карточек: "_s + number(required));
    return L10n::t(u"timer_only", language);
}

QString StatusTexts::cardProof(qint64 required, AppLanguage language)
{
    if (required > 0)
        return inLanguage(language,
                          u"Solve "_s + number(required) + u" unique card"_s + plural(required) +
                              u" in the current topic."_s,
                          u"Реши уникальных карточек по теме: "_s + number(required) + u"."_s);
    return L10n::t(u"proof_off", language);
}

QString StatusTexts::cardBank(qint64 total, qint64 matching, AppLanguage language)
{
    return inLanguage(language,
                      number(total) + u" total, "_s + number(matching) + u" matching current topic."_s,
                      u"Всего: "_s + number(total) + u", по текущей теме: "_s + number(matching) + u"."_s);
}

QString StatusTexts::primaryTimerTitle(Mode mode, AppLanguage language)
{
    return L10n::t(mode == Mode::BreakTime ? u"break_remaining" : u"study_remaining", language);
}

double StatusTexts::sessionProgress(qint64 left, qint64 total)
{
    const auto whole = double(std::max<qint64>(total, 1));
    return std::clamp(1.0 - double(left) / whole, 0.0, 1.0);
}

QString StatusTexts::focusSubtitle(Mode mode, qint64 required, qint64 matching, const QString &status,
                                   AppLanguage language)
{
    switch (mode) {
    case Mode::Studying:
        return status;
    case Mode::BreakTime:
        return inLanguage(language, u"Break is unlocked. Entertainment is allowed until the timer ends."_s,
                          u"Отдых открыт. Развлечения доступны до конца таймера."_s);
    case Mode::Ready:
    case Mode::Locked:
        break;
    }
    if (lacksCards(required, matching))
        return startReadiness(mode, required, matching, language);
    return mode == Mode::Ready ? inLanguage(language, u"Blocking is off. Press Start Study to arm Quorvel."_s,
                                            u"Блокировка выключена. Нажми старт, чтобы включить Quorvel."_s)
                               : inLanguage(language, u"Manual lock is active. Entertainment is blocked."_s,
                                            u"Ручная блокировка активна. Развлечения заблокированы."_s);
}

QString StatusTexts::unsaved(const QMap<QString, QString> &failedSaves, AppLanguage language)
{
    static const QHash<QString, QString> inRussian{
        {u"settings"_s, u"настройки"_s},
        {u"tasks"_s, u"задачи"_s},
        {u"cards"_s, u"карточки"_s},
        {u"progress"_s, u"прогресс"_s},
    };
    if (failedSaves.isEmpty())
        return {};
    QStringList names;
    QStringList reasons;
    for (auto failed = failedSaves.begin(); failed != failedSaves.end(); ++failed) {
        names.append(inLanguage(language, failed.key(), inRussian.value(failed.key(), failed.key())));
        if (!reasons.contains(failed.value()))
            reasons.append(failed.value());
    }
    const auto list = names.join(u", "_s) + u" ("_s + reasons.join(u"; "_s) + u"). "_s;
    return inLanguage(language,
                      u"Could not save: "_s + list +
                          u"Quorvel keeps what you did and tries again with the next change; do not quit "
                          "before that works."_s,
                      u"Не удалось сохранить: "_s + list +
                          u"Quorvel помнит всё сделанное и попробует снова при следующем изменении; не "
                          "выключай его до этого."_s);
}

QString StatusTexts::blockedAppSummary(Mode mode, const QStringList &blockedRunningAppNames,
                                       AppLanguage language)
{
    if (!blocks(mode))
        return L10n::t(u"blocking_off", language);
    if (!blockedRunningAppNames.isEmpty())
        return blockedRunningAppNames.join(u", "_s);
    return inLanguage(language, u"No blocked apps running"_s, u"Нет запущенных блокируемых приложений"_s);
}

QString StatusTexts::counting(const QString &proofProgress, const QString &activeAppName,
                              AppLanguage language)
{
    return inLanguage(language,
                      u"Counting study time. Card proof: "_s + proofProgress + u". Active app: "_s +
                          activeAppName + u"."_s,
                      u"Считаю учебное время. Пруф: "_s + proofProgress + u". Активное приложение: "_s +
                          activeAppName + u"."_s);
}
