#include "PreviewScene.h"

#include "preferenceKeys.h"
#include "sampleRecords.h"

#include <QEvent>
#include <QTimeZone>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr qint64 sessionSeconds = 25 * 60;
constexpr int mostCards = 99'999;

/// Keeps the heartbeat, which comes as a queued call, from its receiver.
class Stillness : public QObject
{
public:
    bool eventFilter(QObject *, QEvent *event) override { return event->type() == QEvent::MetaCall; }
};

Availability missing(const QString &english, const QString &russian)
{
    return Availability::missing(english, russian);
}

BrowserCoverage browser(const QString &name, BrowserCoverage::State state, const QString &english,
                        const QString &russian)
{
    return {name, state, english, russian};
}

} // namespace

PreviewScene::PreviewScene(PreviewState state, PreviewDesktop desktop, AppLanguage language)
    : m_language(language)
{
    m_harness.clock.setTimeZone(QTimeZone::utc());
    m_harness.clock.setWallClock(QDateTime(QDate(2026, 3, 10), QTime(15, 38, 53), Qt::UTC));
    m_harness.idle.since = state == PreviewState::Studying || state == PreviewState::Pro ? 4s : 12s;
    m_harness.preferences.values[PreferenceKeys::language()] = rawValue(language);
    m_harness.applications.start(state == PreviewState::Long ? SampleRecords::longText(language, 200)
                                                             : u"Obsidian"_s);
    storeRecords(state);
    enter();
    play(state);
    limit(desktop);
}

PreviewScene::~PreviewScene() = default;

void PreviewScene::standStill()
{
    m_stillness = std::make_unique<Stillness>();
    controller().installEventFilter(m_stillness.get());
}

void PreviewScene::storeRecords(PreviewState state)
{
    auto &values = m_harness.preferences.values;
    if (state != PreviewState::SignIn && state != PreviewState::CodeSent)
        values[PreferenceKeys::accessMode()] = rawValue(AccessMode::Guest);
    if (state == PreviewState::CoachRunning || state == PreviewState::Long) {
        const auto longest = u"a.student.with.a.rather.long.address"_s + u"@mail.university.example"_s;
        values[PreferenceKeys::accessMode()] = rawValue(AccessMode::Account);
        values[PreferenceKeys::signedInEmail()] =
            state == PreviewState::Long ? longest : u"anna@example.com"_s;
    }
    if (state == PreviewState::Empty)
        return;

    auto config = ControllerHarness::config(25, 45, 3);
    config.allowedStudyDomains = QStringList{u"khanacademy.org"_s, u"wikipedia.org"_s};
    if (state == PreviewState::Long)
        config.allowedStudyApps.append(u"different"_s), config.allowedStudyApps.append(u"дифференц"_s);
    m_harness.storeConfig(config);
    m_harness.storeTasks(SampleRecords::tasks(m_language));
    m_harness.storeCards(state == PreviewState::Long ? SampleRecords::manyLongCards(m_language, mostCards)
                                                     : SampleRecords::cards(m_language));
    values[PreferenceKeys::studySeconds(u"2026-03-10"_s)] = sessionSeconds;
    values[PreferenceKeys::completedSessions(u"2026-03-10"_s)] = qint64(1);

    // What the session of play() earns comes on top.
    auto progress = SampleRecords::progress();
    if (state != PreviewState::Ready && state != PreviewState::NoEvents && state != PreviewState::Locked) {
        progress.totalXP -= 6 + 10;
        progress.totalFocusSeconds -= 378;
        progress.totalCardProofs -= 1;
    }
    if (state == PreviewState::Long)
        progress.totalXP = 99'999'900;
    m_harness.storeProgress(progress);
}

void PreviewScene::enter()
{
    m_harness.start();
    controller().tick(); // looks at the desktop
}

void PreviewScene::play(PreviewState state)
{
    if (state == PreviewState::SignIn || state == PreviewState::Empty)
        return;
    if (state == PreviewState::CodeSent) {
        controller().setAuthEmailText(u"anna@example.com"_s);
        controller().requestEmailCode();
        m_harness.backend.answer(QJsonObject());
        return;
    }
    controller().setCurrentStudyTopicText(SampleRecords::topic(m_language));
    controller().selectNextStudyCard(false);
    if (state == PreviewState::NoEvents)
        return;
    if (state == PreviewState::Ready) {
        controller().stopQuorvel();
        return;
    }
    if (state == PreviewState::Locked) {
        controller().lockNow();
        return;
    }
    if (state == PreviewState::Break) {
        takeBreak();
        return;
    }
    study();
    if (state == PreviewState::Pro)
        controller().setProModeEnabled(true);
    if (state == PreviewState::CoachRunning)
        askCoach();
}

/// Six minutes and 18 seconds of a session, in which a blocked application was started and a card was
/// answered, first wrongly and then rightly.
void PreviewScene::study()
{
    controller().startStudy();
    m_harness.seconds(266);
    m_harness.applications.start(u"Discord"_s);
    m_harness.applications.bringToFront(m_harness.applications.running().at(1).processId);
    m_harness.seconds(72);
    m_harness.answer(u"sin x"_s);
    m_harness.seconds(39);
    m_harness.answerRightly();
    m_harness.seconds(1); // tells the proof in the status
}

/// A whole session with its three cards, and 3:23 of the break.
void PreviewScene::takeBreak()
{
    controller().startStudy();
    for (int card = 0; card < 3; ++card)
        m_harness.answerRightly();
    m_harness.seconds(sessionSeconds - 1);
    m_harness.seconds(203);
}

void PreviewScene::askCoach()
{
    controller().setAiPromptText(SampleRecords::topic(m_language));
    controller().generateAIPlanAndCards();
}

void PreviewScene::limit(PreviewDesktop desktop)
{
    using State = BrowserCoverage::State;
    if (desktop == PreviewDesktop::Whole)
        return;
    if (desktop == PreviewDesktop::Nothing) {
        m_desktopSupport.setApplications(missing(u"The X server of this desktop cannot be reached."_s,
                                                 u"X-сервер этого рабочего стола недоступен."_s));
        m_desktopSupport.setIdle(
            missing(u"The X server of this desktop does not tell how long nobody has touched it."_s,
                    u"X-сервер этого рабочего стола не сообщает, как давно его не трогали."_s));
        m_desktopSupport.setBrowsers(
            missing(u"Browser tabs are not seen, because Quorvel cannot open the socket for its companion."_s,
                    u"Вкладки браузера не видны: Quorvel не может открыть сокет для своего компаньона."_s));
        m_desktopSupport.setStatusItem(
            missing(u"This desktop has no place for status items; everything is in this window."_s,
                    u"В этой системе нет места для значков состояния; всё есть в этом окне."_s));
        return;
    }
    m_desktopSupport.setBrowserCoverage({
        browser(u"Chromium"_s, State::Missing,
                u"Its tabs are not seen: the companion is not installed in this browser."_s,
                u"Вкладки не видны: в этом браузере не установлен компаньон."_s),
        browser(u"Firefox"_s, State::Connected, u"Its tabs are seen."_s, u"Вкладки видны."_s),
        browser(u"Safari"_s, State::CannotWork, u"Safari has no companion here, so its tabs are not seen."_s,
                u"Для Safari здесь нет компаньона, поэтому вкладки не видны."_s),
    });
}
