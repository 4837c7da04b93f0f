#include "sampleRecords.h"

using namespace Qt::StringLiterals;

namespace {

const QDateTime firstDay(QDate(2026, 3, 2), QTime(8, 0), Qt::UTC);

/// Ids that are the same in every run.
QUuid numberedId(quint32 number)
{
    return QUuid(number, 0, 0x4000, 0x80, 0, 0, 0, 0, 0, 0, 0);
}

StudyCard card(const QString &topic, const QString &prompt, const QString &answer, qint64 right, qint64 wrong)
{
    StudyCard made;
    if (!topic.isEmpty())
        made.topic = topic;
    made.prompt = prompt;
    made.expectedAnswer = answer;
    made.correctCount = right;
    made.wrongCount = wrong;
    made.createdAt = firstDay;
    return made;
}

StudyTask task(const QString &title, bool done)
{
    StudyTask made;
    made.title = title;
    made.createdAt = firstDay;
    if (done)
        made.completedAt = firstDay.addDays(1);
    return made;
}

template <typename Record>
std::deque<Record> numbered(std::deque<Record> records)
{
    quint32 number = 0;
    for (auto &record : records)
        record.id = numberedId(++number);
    return records;
}

} // namespace

QString SampleRecords::topic(AppLanguage language)
{
    return inLanguage(language, u"Derivatives"_s, u"Производные"_s);
}

std::deque<StudyCard> SampleRecords::cards(AppLanguage language)
{
    const auto words = [language](const QString &english, const QString &russian) {
        return inLanguage(language, english, russian);
    };
    const auto own = topic(language);
    auto asked = card(own, words(u"What is the derivative of sin x?"_s, u"Чему равна производная sin x?"_s),
                      u"cos x"_s, 3, 2);
    auto next = card(
        own,
        words(u"State the product rule for (uv)′."_s, u"Запиши правило производной произведения (uv)′."_s),
        u"u′v + uv′"_s, 3, 2);
    asked.lastAskedAt = firstDay.addDays(2); // longest ago: of equals it is asked first
    next.lastAskedAt = firstDay.addDays(3);
    return numbered(std::deque<StudyCard>{
        asked,
        next,
        card(own,
             words(u"What does the derivative of a function measure at a point?"_s,
                   u"Что показывает производная функции в точке?"_s),
             words(u"rate of change|slope"_s, u"скорость изменения|наклон"_s), 5, 0),
        card(own,
             words(u"When does a function have a local maximum?"_s,
                   u"Когда у функции есть локальный максимум?"_s),
             words(u"derivative changes from plus to minus"_s, u"производная меняет знак с плюса на минус"_s),
             1, 1),
        card(own, words(u"Differentiate ln x."_s, u"Найди производную ln x."_s), u"1/x"_s, 2, 0),
        card(words(u"Integrals"_s, u"Интегралы"_s),
             words(u"What is the integral of 1/x?"_s, u"Чему равен интеграл от 1/x?"_s), u"ln x"_s, 0, 1),
        card({}, words(u"Which study block comes first tomorrow?"_s, u"Какой учебный блок завтра первый?"_s),
             words(u"limits"_s, u"пределы"_s), 1, 0),
    });
}

std::deque<StudyTask> SampleRecords::tasks(AppLanguage language)
{
    const auto words = [language](const QString &english, const QString &russian) {
        return inLanguage(language, english, russian);
    };
    return numbered(std::deque<StudyTask>{
        task(words(u"Solve 5 chain rule problems from chapter 3"_s,
                   u"Решить 5 задач на цепное правило из главы 3"_s),
             false),
        task(words(u"Write the product and quotient rules from memory"_s,
                   u"Записать по памяти правила произведения и частного"_s),
             false),
        task(words(u"Review mistakes and write the corrected method"_s,
                   u"Разбери ошибки и запиши правильный метод решения"_s),
             false),
        task(words(u"Read the section on implicit differentiation"_s,
                   u"Прочитать раздел о неявном дифференцировании"_s),
             true),
        task(words(u"Sketch the graph of y = x³ − 3x"_s, u"Построить график y = x³ − 3x"_s), true),
    });
}

UserProgress SampleRecords::progress()
{
    UserProgress made;
    made.totalXP = 447;
    made.totalFocusSeconds = 3 * 3600 + 6 * 60 + 18;
    made.totalCompletedSessions = 7;
    made.totalCardProofs = 9;
    made.currentStreak = 4;
    made.longestStreak = 6;
    made.lastCompletedStudyDay = u"2026-03-10"_s;
    return made;
}

QString SampleRecords::longText(AppLanguage language, int letters)
{
    const auto word = inLanguage(language, u"differentiability "_s, u"дифференцируемость "_s);
    return word.repeated(letters / int(word.size()) + 1).left(letters - 1).trimmed() + u"?"_s;
}

std::deque<StudyCard> SampleRecords::manyLongCards(AppLanguage language, int count)
{
    std::deque<StudyCard> made(size_t(count), card(topic(language), u"x"_s, u"x"_s, 0, 0));
    auto &first = made.front();
    first.prompt = longText(language, 300);
    first.expectedAnswer = longText(language, 120);
    first.correctCount = 99'999;
    first.wrongCount = 99'999;
    return numbered(std::move(made));
}
