#pragma once

#include "FakeBrowserScripting.h"
#include "FakeClock.h"
#include "FakePreferences.h"
#include "FakeRecordFiles.h"
#include "FakeRunningApplications.h"
#include "FakeSystemIdle.h"
#include "QuorvelController.h"
#include "jsonCodecs.h"

#include <memory>

/// Sets parts of a controller's state that its commands reach only through cards.
struct ControllerState
{
    static void setTopicCardCount(QuorvelController &controller, qint64 count)
    {
        controller.m_topicCardCount = count;
    }
    static void addProof(QuorvelController &controller)
    {
        controller.m_currentSessionProofCardIDs.insert(QUuid::createUuid());
        controller.m_currentSessionCardProofCount = controller.m_currentSessionProofCardIDs.size();
    }
};

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
    UserProgress storedProgress()
    {
        return decodeUserProgress(files.files.at(QStringLiteral("progress.json"))).value();
    }

    QuorvelController &start()
    {
        controller.reset();
        controller = std::make_unique<QuorvelController>(
            ControllerPorts{clock, idle, applications, browsers, preferences, files});
        return *controller;
    }
    QuorvelController &startWith(const QuorvelConfig &config)
    {
        storeConfig(config);
        return start();
    }

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

    static QuorvelConfig config(qint64 studyMinutes = 25, qint64 breakMinutes = 45, qint64 requiredProofs = 0)
    {
        auto settings = QuorvelConfig::defaults();
        settings.studyMinutes = studyMinutes;
        settings.breakMinutes = breakMinutes;
        settings.requiredProofsToUnlock = requiredProofs;
        return settings;
    }
};
