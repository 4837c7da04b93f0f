#pragma once

#include "FakeBackendClient.h"
#include "FakeBrowserScripting.h"
#include "FakeClock.h"
#include "FakePreferences.h"
#include "FakeRecordFiles.h"
#include "FakeRunningApplications.h"
#include "FakeSystemIdle.h"
#include "FakeUrlOpener.h"
#include "QuorvelController.h"
#include "jsonCodecs.h"

#include <memory>

/// A controller on a desktop of fakes, with the study application "Anki" in front. Time passes only by
/// seconds().
struct ControllerHarness
{
    FakeClock clock;
    FakeSystemIdle idle;
    FakeRunningApplications applications;
    FakeBrowserScripting browsers;
    FakePreferences preferences;
    FakeRecordFiles files;
    FakeBackendClient backend;
    FakeUrlOpener urls;
    qint32 studyApplication = applications.start(QStringLiteral("Anki"));
    std::unique_ptr<QuorvelController> controller;

    /// The settings that the next start loads.
    void storeConfig(const QuorvelConfig &config)
    {
        files.files[QStringLiteral("config.json")] = encodeConfig(config);
    }
    void storeProgress(const UserProgress &progress)
    {
        files.files[QStringLiteral("progress.json")] = encodeUserProgress(progress);
    }
    void storeCards(const std::deque<StudyCard> &cards)
    {
        files.files[QStringLiteral("study-cards.json")] = encodeStudyCards(cards);
    }
    void storeTasks(const std::deque<StudyTask> &tasks)
    {
        files.files[QStringLiteral("study-tasks.json")] = encodeStudyTasks(tasks);
    }
    QuorvelConfig storedConfig()
    {
        return decodeConfig(files.files.at(QStringLiteral("config.json"))).value();
    }
    std::deque<StudyCard> storedCards()
    {
        return decodeStudyCards(files.files.at(QStringLiteral("study-cards.json"))).value();
    }
    std::deque<StudyTask> storedTasks()
    {
        return decodeStudyTasks(files.files.at(QStringLiteral("study-tasks.json"))).value();
    }
    UserProgress storedProgress()
    {
        return decodeUserProgress(files.files.at(QStringLiteral("progress.json"))).value();
    }

    QuorvelController &start()
    {
        controller.reset();
        controller = std::make_unique<QuorvelController>(
            ControllerPorts{clock, idle, applications, browsers, preferences, files, backend, urls});
        return *controller;
    }
    QuorvelController &startWith(const QuorvelConfig &config)
    {
        storeConfig(config);
        return start();
    }

    /// The record files that were written, in order; their rolling copies are not among them.
    QStringList saves() const
    {
        QStringList names;
        for (const auto &step : files.steps) {
            if (step.startsWith(u"write "))
                names.append(step.sliced(6));
        }
        return names;
    }

    /// Types a card into the editor and adds it.
    void addCard(const QString &prompt, const QString &expectedAnswer, const QString &topic = {})
    {
        controller->setNewCardPromptText(prompt);
        controller->setNewCardAnswerText(expectedAnswer);
        controller->setNewCardTopicText(topic);
        controller->addStudyCard();
    }
    /// Types an answer to the card that is asked.
    void answer(const QString &text)
    {
        controller->setQuizAnswerText(text);
        controller->submitQuizAnswer();
    }
    /// Answers the card that is asked with the first alternative that it expects.
    void answerRightly() { answer(controller->activeStudyCardOrEmpty().expectedAnswer.section(u'|', 0, 0)); }

    /// Lets whole seconds pass, one heartbeat each.
    void seconds(qint64 count)
    {
        for (qint64 second = 0; second < count; ++second) {
            clock.advance(std::chrono::seconds(1));
            controller->tick();
        }
    }

    /// The events without their times, newest first.
    QStringList events() const
    {
        QStringList messages;
        for (const auto &line : controller->recentEvents())
            messages.append(line.section(u' ', 1)); // the test locale writes the time as one word
        return messages;
    }

    static StudyCard card(const QString &prompt, const QString &expectedAnswer,
                          const std::optional<QString> &topic = std::nullopt)
    {
        StudyCard made;
        made.id = QUuid::createUuid();
        made.topic = topic;
        made.prompt = prompt;
        made.expectedAnswer = expectedAnswer;
        made.createdAt = QDateTime(QDate(2026, 9, 1), QTime(8, 0), Qt::UTC);
        return made;
    }

    static QuorvelConfig config(qint64 studyMinutes = 25, qint64 breakMinutes = 45, qint64 requiredProofs = 0)
    {
        auto settings = QuorvelConfig::defaults();
        settings.studyMinutes = studyMinutes;
        settings.breakMinutes = breakMinutes;
        settings.requiredProofsToUnlock = requiredProofs;
        return settings;
    }
};

/// What the backend's client tells of a request that failed.
inline BackendError errorOf(const QString &description)
{
    return {QStringLiteral("QuorvelBackend"), backendRefused, description};
}

inline QStringList prompts(const auto &cards)
{
    QStringList list;
    for (const auto &card : cards)
        list.append(card.prompt);
    return list;
}

inline QStringList titles(const auto &tasks)
{
    QStringList list;
    for (const auto &task : tasks)
        list.append(task.title);
    return list;
}
