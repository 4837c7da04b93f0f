#pragma once

#include "FakeBackendClient.h"
#include "FakeBrowserScripting.h"
#include "FakeClock.h"
#include "FakeRunningApplications.h"
#include "FakeSystemIdle.h"
#include "FakeUrlOpener.h"
#include "FileCalls.h"
#include "FolderRecordFiles.h"
#include "QuorvelController.h"
#include "StudentRecords.h"
#include "TextPreferences.h"

#include <QDir>
#include <QTemporaryDir>

/// The system's own calls, which count what is open. They wait for no disk: a year has more syncs than a test
/// has time, and nobody cuts the power here.
class CountedFileCalls : public FileCalls
{
public:
    int openFiles = 0;

    int open(const char *path, int flags, mode_t mode) override
    {
        const int file = FileCalls::open(path, flags, mode);
        openFiles += file >= 0 ? 1 : 0;
        return file;
    }
    int close(int file) override
    {
        --openFiles;
        return FileCalls::close(file);
    }
    int fsync(int) override { return 0; }
    DIR *opendir(const char *path) override
    {
        auto *folder = FileCalls::opendir(path);
        openFiles += folder ? 1 : 0;
        return folder;
    }
    int closedir(DIR *folder) override
    {
        --openFiles;
        return FileCalls::closedir(folder);
    }
};

/// A desk with the program on it, whose records and preferences are real files, and StudentRecords beside it
/// that are told of all that is done here. Time passes by pass() alone.
class StudentDesk
{
public:
    FakeClock clock;
    FakeSystemIdle idle;
    FakeRunningApplications applications;
    CountedFileCalls calls;
    StudentRecords expected;
    std::unique_ptr<TextPreferences> preferences;
    std::unique_ptr<QuorvelController> controller;

    QString dataFolder() const { return m_folder.filePath(QStringLiteral("data")); }
    QString preferencesFolder() const
    {
        return m_folder.filePath(QStringLiteral("config-%1").arg(m_preferencesFolder));
    }

    void start()
    {
        preferences = std::make_unique<TextPreferences>(preferencesFolder(), calls);
        m_files = std::make_unique<FolderRecordFiles>(dataFolder(), calls);
        controller = std::make_unique<QuorvelController>(ControllerPorts{
            clock, idle, applications, m_browsers, *preferences, *m_files, m_backend, m_urls});
        expected.restart(clock.now());
    }
    void end()
    {
        controller.reset();
        preferences.reset();
    }
    /// As when the power button ends it: what was only to be written at an orderly end is not.
    void endByForce()
    {
        const auto before = preferencesFolder();
        ++m_preferencesFolder;
        QDir().mkpath(preferencesFolder());
        for (const auto &name : QDir(before).entryList(QDir::Files))
            QFile::copy(before + u'/' + name, preferencesFolder() + u'/' + name);
        end();
        QDir(before).removeRecursively();
    }

    /// Lets seconds pass, a heartbeat each; `counts`: whether study is to count in them.
    void pass(qint64 seconds, bool counts = true)
    {
        for (qint64 second = 0; second < seconds; ++second) {
            clock.advance(std::chrono::seconds(1));
            controller->tick();
            expected.second(clock.now(), counts);
        }
    }

    /// Whether it was to start, as the cards of the topic allow it.
    bool startStudy()
    {
        const bool starts = expected.canStart();
        controller->startStudy();
        if (!starts)
            return false;
        expected.start();
        expected.second(clock.now(), true);
        return true;
    }
    void stop()
    {
        controller->stopQuorvel();
        expected.leaveTo(StudentRecords::Mode::Ready);
        expected.second(clock.now(), true);
    }
    void lock()
    {
        controller->lockNow();
        expected.leaveTo(StudentRecords::Mode::Locked);
        expected.second(clock.now(), true);
    }
    void takeBreak(qint64 minutes)
    {
        controller->unlockManualBreak(minutes);
        expected.takeBreak(minutes);
    }

    /// Answers the card that is asked, as it expects or not.
    void answer(bool rightly)
    {
        const auto asked = controller->activeStudyCard();
        if (!asked)
            return;
        controller->setQuizAnswerText(rightly ? asked->expectedAnswer.section(u'|', 0, 0)
                                              : QStringLiteral("no idea"));
        controller->submitQuizAnswer();
        expected.answer(asked->id, rightly, clock.now());
    }
    void addCard(const QString &prompt, const QString &expectedAnswer, const QString &topic)
    {
        controller->setNewCardPromptText(prompt);
        controller->setNewCardAnswerText(expectedAnswer);
        controller->setNewCardTopicText(topic);
        controller->addStudyCard();
        StudyCard card;
        card.id = controller->studyCards().front().id;
        card.prompt = prompt;
        card.expectedAnswer = expectedAnswer;
        card.createdAt = StudentRecords::inWholeSeconds(clock.now());
        if (const auto own = topic.isEmpty() ? expected.topic : topic; !own.isEmpty())
            card.topic = own;
        expected.cards.push_front(card);
    }
    void deleteOldestCard()
    {
        controller->deleteStudyCard(controller->studyCards().back());
        expected.cards.pop_back();
    }
    void setTopic(const QString &topic)
    {
        controller->setCurrentStudyTopicText(topic);
        expected.topic = topic;
    }

    void addTask(const QString &title)
    {
        controller->setNewStudyTaskText(title);
        controller->addStudyTask();
        StudyTask task;
        task.id = controller->studyTasks().front().id;
        task.title = title;
        task.createdAt = StudentRecords::inWholeSeconds(clock.now());
        expected.tasks.push_front(task);
    }
    void completeTask(size_t row)
    {
        controller->completeStudyTask(controller->studyTasks()[row]);
        expected.complete(expected.tasks[row], clock.now());
    }
    void reopenTask(size_t row)
    {
        controller->reopenStudyTask(controller->studyTasks()[row]);
        expected.tasks[row].completedAt.reset();
    }
    void deleteTask(size_t row)
    {
        controller->deleteStudyTask(controller->studyTasks()[row]);
        expected.tasks.erase(expected.tasks.begin() + std::ptrdiff_t(row));
    }
    void clearCompletedTasks()
    {
        controller->clearCompletedTasks();
        std::erase_if(expected.tasks, [](const auto &task) { return task.completedAt.has_value(); });
    }

    void configure(qint64 studyMinutes, qint64 breakMinutes, qint64 proofs, const QStringList &domains)
    {
        controller->setStudyMinutesText(QString::number(studyMinutes));
        controller->setBreakMinutesText(QString::number(breakMinutes));
        controller->setRequiredProofsText(QString::number(proofs));
        controller->setBlockedDomainsText(domains.join(u'\n'));
        controller->saveSettings();
        auto config = expected.config;
        config.studyMinutes = studyMinutes;
        config.breakMinutes = breakMinutes;
        config.requiredProofsToUnlock = proofs;
        config.blockedDomains = domains;
        expected.configure(config);
    }
    void restoreDefaultSettings()
    {
        controller->resetDefaultSettings();
        expected.configure(QuorvelConfig::defaults());
    }
    void speak(AppLanguage language)
    {
        controller->setLanguage(language);
        expected.language = language;
    }
    void setProMode(bool enabled)
    {
        controller->setProModeEnabled(enabled);
        expected.proMode = enabled;
    }

private:
    FakeBrowserScripting m_browsers;
    FakeBackendClient m_backend;
    FakeUrlOpener m_urls;
    QTemporaryDir m_folder;
    int m_preferencesFolder = 0; ///< grows with each forced end
    std::unique_ptr<FolderRecordFiles> m_files;
};
