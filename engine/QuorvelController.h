#pragma once

#include "AccessMode.h"
#include "AppLanguage.h"
#include "BackendAnswer.h"
#include "Preferences.h"
#include "QuorvelConfig.h"
#include "RecentEventModel.h"
#include "RecordStore.h"
#include "StudyCardModel.h"
#include "StudyTaskModel.h"
#include "UserProgress.h"
#include "publishedField.h"

#include <QMap>
#include <QObject>
#include <QSet>
#include <QStringList>
#include <QTimer>

#include <chrono>
#include <functional>
#include <unordered_map>
#include <vector>

class BackendClient;
class BrowserScripting;
class Clock;
class RunningApplications;
class SystemIdle;
class UrlOpener;
struct AIStudySuggestion;
struct RunningApplication;

/// What the controller needs of the world outside. Everything lives at least as long as the controller.
struct ControllerPorts
{
    Clock &clock;
    SystemIdle &idle;
    RunningApplications &applications;
    BrowserScripting &browsers;
    Preferences &preferences;
    RecordFiles &files;
    BackendClient &backend;
    UrlOpener &urls;
};

/// Whether a second of study counts; the reason, in the user's language, is empty exactly when it does.
struct StudyMoment
{
    bool isValid = true;
    QString reason;

    bool operator==(const StudyMoment &) const = default;
};

/// The one long-lived object at the centre: it owns all live state, runs the one-second heartbeat that blocks
/// applications and counts study time, and offers the operations that the interface calls. Interface thread
/// only. Counters and clocks are whole seconds in signed 64 bits; an overflow ends the program.
class QuorvelController : public QObject
{
    Q_OBJECT
    using Self = QuorvelController;

public:
    /// Ready: nothing is blocked and no clock runs. Locked: blocking without a clock. Studying: blocking, and
    /// the study clock runs while the moment is valid. BreakTime: nothing is blocked and the break clock
    /// runs.
    enum class Mode { Ready, Locked, Studying, BreakTime };
    Q_ENUM(Mode)

    // clang-format off
    // Session
    QUORVEL_PUBLISHED(Mode, mode, Mode, Mode::Ready)
    QUORVEL_PUBLISHED(qint64, studyRemaining, StudyRemaining, 0)       ///< seconds still to count in this session
    QUORVEL_PUBLISHED(qint64, breakRemaining, BreakRemaining, 0)       ///< seconds
    QUORVEL_PUBLISHED(qint64, todayStudySeconds, TodayStudySeconds, 0) ///< seconds counted today
    QUORVEL_PUBLISHED(qint64, completedSessions, CompletedSessions, 0) ///< sessions completed today
    QUORVEL_PUBLISHED(QString, activeAppName, ActiveAppName, QString()) ///< name of the frontmost application
    QUORVEL_PUBLISHED(qint64, idleSeconds, IdleSeconds, 0)             ///< seconds since the last user input
    QUORVEL_PUBLISHED(QStringList, blockedRunningAppNames, BlockedRunningAppNames, QStringList()) ///< sorted; empty while blocking is off
    QUORVEL_PUBLISHED(QString, statusMessage, StatusMessage, QString())
    QUORVEL_PUBLISHED(QString, unsavedText, UnsavedText, QString())    ///< what the disk does not hold as it is here, and why; mostly empty
    QUORVEL_PUBLISHED(QStringList, recentEvents, RecentEvents, QStringList()) ///< newest first, at most 8 lines, English

    // Cards, tasks, progress
    QUORVEL_PUBLISHED(qint64, studyTasksRevision, StudyTasksRevision, 0) ///< grows with every change of studyTasks()
    QUORVEL_PUBLISHED(qint64, studyCardsRevision, StudyCardsRevision, 0) ///< grows with every change of studyCards()
    QUORVEL_PUBLISHED(qint64, topicCardCount, TopicCardCount, 0)         ///< cards that match the current topic
    QUORVEL_PUBLISHED(qint64, studyCardCount, StudyCardCount, 0)
    QUORVEL_PUBLISHED(qint64, studyTaskCount, StudyTaskCount, 0)
    QUORVEL_PUBLISHED(qint64, completedTaskCount, CompletedTaskCount, 0)
    QUORVEL_PUBLISHED(QStringList, nextOpenTaskTitles, NextOpenTaskTitles, QStringList()) ///< in list order, three at most
    QUORVEL_PUBLISHED(qint64, requiredProofsToUnlock, RequiredProofsToUnlock, 0) ///< cards that a break needs; 0: none
    QUORVEL_PUBLISHED(bool, readinessIsShort, ReadinessIsShort, false)   ///< whether cards are missing for a session
    QUORVEL_PUBLISHED(qint64, currentSessionCardProofCount, CurrentSessionCardProofCount, 0) ///< distinct cards proven in this session
    QUORVEL_PUBLISHED(QString, quizFeedback, QuizFeedback, QString())
    QUORVEL_PUBLISHED(QString, aiOutputText, AiOutputText, QString())
    QUORVEL_PUBLISHED(bool, isAICoachRunning, IsAICoachRunning, false)

    // Drafts of input fields
    QUORVEL_DRAFT(newStudyTaskText, NewStudyTaskText)
    QUORVEL_DRAFT(currentStudyTopicText, CurrentStudyTopicText)
    QUORVEL_DRAFT(newCardTopicText, NewCardTopicText)
    QUORVEL_DRAFT(newCardPromptText, NewCardPromptText)
    QUORVEL_DRAFT(newCardAnswerText, NewCardAnswerText)
    QUORVEL_DRAFT(quizAnswerText, QuizAnswerText)
    QUORVEL_DRAFT(aiPromptText, AiPromptText)
    QUORVEL_DRAFT(studyMinutesText, StudyMinutesText)
    QUORVEL_DRAFT(breakMinutesText, BreakMinutesText)
    QUORVEL_DRAFT(maxIdleSecondsText, MaxIdleSecondsText)
    QUORVEL_DRAFT(requiredProofsText, RequiredProofsText)
    QUORVEL_DRAFT(blockedAppsText, BlockedAppsText)
    QUORVEL_DRAFT(blockedDomainsText, BlockedDomainsText)
    QUORVEL_DRAFT(allowedStudyDomainsText, AllowedStudyDomainsText)
    QUORVEL_DRAFT(allowedStudyAppsText, AllowedStudyAppsText)
    QUORVEL_DRAFT(authEmailText, AuthEmailText)
    QUORVEL_DRAFT(authCodeText, AuthCodeText)

    // Language and account
    QUORVEL_PUBLISHED(AppLanguage, language, Language, AppLanguage::English)
    QUORVEL_PUBLISHED(bool, proModeEnabled, ProModeEnabled, false)
    QUORVEL_PUBLISHED(AccessMode, accessMode, AccessMode, AccessMode::None)
    QUORVEL_PUBLISHED(QString, authStatusText, AuthStatusText, QString())

    // Derived flags and texts, in the interface language
    QUORVEL_PUBLISHED(bool, isBlockingActive, IsBlockingActive, false)
    QUORVEL_PUBLISHED(bool, canStartStudy, CanStartStudy, false)
    QUORVEL_PUBLISHED(QString, startReadinessText, StartReadinessText, QString())
    QUORVEL_PUBLISHED(QString, studyStartMessage, StudyStartMessage, QString())
    QUORVEL_PUBLISHED(QString, proofWaitMessage, ProofWaitMessage, QString())
    QUORVEL_PUBLISHED(QString, proofProgressText, ProofProgressText, QString())
    QUORVEL_PUBLISHED(QString, proofPolicyText, ProofPolicyText, QString())
    QUORVEL_PUBLISHED(QString, primaryTimerTitle, PrimaryTimerTitle, QString())
    QUORVEL_PUBLISHED(QString, primaryTimerText, PrimaryTimerText, QString())
    QUORVEL_PUBLISHED(double, sessionProgress, SessionProgress, 0.0) ///< part that is over, 0 to 1
    QUORVEL_PUBLISHED(QString, focusSubtitle, FocusSubtitle, QString())
    QUORVEL_PUBLISHED(QString, blockedAppSummaryText, BlockedAppSummaryText, QString())
    QUORVEL_PUBLISHED(QString, activeTopicDisplay, ActiveTopicDisplay, QString()) ///< current topic, or that all are meant
    QUORVEL_PUBLISHED(QString, cardProofText, CardProofText, QString())    ///< what the cards are asked for
    QUORVEL_PUBLISHED(QString, cardBankText, CardBankText, QString())      ///< how many cards there are and match
    QUORVEL_PUBLISHED(QString, progressSummaryText, ProgressSummaryText, QString())
    QUORVEL_PUBLISHED(QString, modeText, ModeText, QString()) ///< display word of the mode
    QUORVEL_PUBLISHED(QString, levelText, LevelText, QString())
    QUORVEL_PUBLISHED(QString, xpText, XpText, QString())
    QUORVEL_PUBLISHED(QString, characterTitleText, CharacterTitleText, QString())
    QUORVEL_PUBLISHED(QString, avatarSymbol, AvatarSymbol, QString()) ///< name of the avatar's icon
    QUORVEL_PUBLISHED(QString, streakText, StreakText, QString())
    QUORVEL_PUBLISHED(QString, bestStreakText, BestStreakText, QString())
    QUORVEL_PUBLISHED(qint64, totalXP, TotalXP, 0)
    QUORVEL_PUBLISHED(qint64, totalFocusSeconds, TotalFocusSeconds, 0) ///< counted seconds of all days
    QUORVEL_PUBLISHED(qint64, totalCardProofs, TotalCardProofs, 0)
    // clang-format on

    // Optional values reach the interface as a value (empty where there is none) and a flag
    Q_PROPERTY(QString signedInEmail READ signedInEmailText NOTIFY signedInEmailChanged)
    Q_PROPERTY(bool hasSignedInEmail READ hasSignedInEmail NOTIFY signedInEmailChanged)
    Q_PROPERTY(QString quizRevealedAnswer READ quizRevealedAnswerText NOTIFY quizRevealedAnswerChanged)
    Q_PROPERTY(bool hasQuizRevealedAnswer READ hasQuizRevealedAnswer NOTIFY quizRevealedAnswerChanged)
    Q_PROPERTY(StudyCard activeStudyCard READ activeStudyCardOrEmpty NOTIFY activeStudyCardChanged)
    Q_PROPERTY(bool hasActiveStudyCard READ hasActiveStudyCard NOTIFY activeStudyCardChanged)

    Q_PROPERTY(StudyCardModel *studyCardModel READ studyCardModel CONSTANT)
    Q_PROPERTY(StudyTaskModel *studyTaskModel READ studyTaskModel CONSTANT)
    Q_PROPERTY(RecentEventModel *recentEventModel READ recentEventModel CONSTANT)

public:
    /// Loads everything that is stored, migrates the blocklists where they are older than the built-in ones
    /// (which may save), and starts the heartbeat.
    explicit QuorvelController(const ControllerPorts &ports, QObject *parent = nullptr);
    ~QuorvelController() override;

    const QuorvelConfig &config() const { return m_config.value(); }
    const UserProgress &userProgress() const { return m_userProgress.value(); }
    const std::deque<StudyCard> &studyCards() const { return m_studyCards.bank().cards(); } ///< newest first
    const std::deque<StudyTask> &studyTasks() const { return m_studyTasks.tasks(); }        ///< newest first
    const std::optional<StudyCard> &activeStudyCard() const { return m_activeStudyCard.value(); }
    const std::optional<QString> &signedInEmail() const { return m_signedInEmail.value(); }
    const std::optional<QString> &quizRevealedAnswer() const { return m_quizRevealedAnswer.value(); }

    QString signedInEmailText() const { return signedInEmail().value_or(QString()); }
    bool hasSignedInEmail() const { return signedInEmail().has_value(); }
    QString quizRevealedAnswerText() const { return quizRevealedAnswer().value_or(QString()); }
    bool hasQuizRevealedAnswer() const { return quizRevealedAnswer().has_value(); }
    StudyCard activeStudyCardOrEmpty() const { return activeStudyCard().value_or(StudyCard()); }
    bool hasActiveStudyCard() const { return activeStudyCard().has_value(); }

    StudyCardModel *studyCardModel() { return &m_studyCards; }
    StudyTaskModel *studyTaskModel() { return &m_studyTasks; }
    RecentEventModel *recentEventModel() { return &m_recentEventModel; }

    // Session commands (session.cpp)
    Q_INVOKABLE void startStudy();
    Q_INVOKABLE void lockNow();
    Q_INVOKABLE void stopQuorvel();
    /// Begins a break of `minutes`, at least one, from any mode; a running session is given up.
    Q_INVOKABLE void unlockManualBreak(qint64 minutes);

    // Cards (cards.cpp)
    /// Adds a card from the three editor fields; without a topic it gets the current one, if there is one.
    Q_INVOKABLE void addStudyCard();
    /// Removes every card of that id.
    Q_INVOKABLE void deleteStudyCard(const StudyCard &card);
    /// In list order; all cards where no topic is set.
    std::vector<StudyCard> cardsMatchingCurrentTopic() const;

    // Quiz (quiz.cpp)
    /// Asks the weakest card of the current topic that has not counted in this session yet. `log`: whether
    /// the user asked for it and is told so.
    Q_INVOKABLE void selectNextStudyCard(bool log);
    Q_INVOKABLE void submitQuizAnswer();
    Q_INVOKABLE void revealQuizAnswer();

    // Study plan (tasks.cpp)
    Q_INVOKABLE void addStudyTask();
    /// Ticks the first task of that id, also one that is ticked already.
    Q_INVOKABLE void completeStudyTask(const StudyTask &task);
    Q_INVOKABLE void reopenStudyTask(const StudyTask &task);
    Q_INVOKABLE void clearCompletedTasks();
    /// Removes every task of that id.
    Q_INVOKABLE void deleteStudyTask(const StudyTask &task);
    /// In list order.
    std::vector<StudyTask> completedStudyTasks() const;

    // Settings (settings.cpp)
    /// Puts the drafts in force, as far as they make sense, and shows in them what is in force then.
    Q_INVOKABLE void saveSettings();
    Q_INVOKABLE void resetDefaultSettings();
    Q_INVOKABLE void mergeDefaultBlocklists();
    Q_INVOKABLE void setProModeEnabled(bool enabled);

    // Language and account (language.cpp, account.cpp)
    Q_INVOKABLE void setLanguage(AppLanguage language);
    Q_INVOKABLE void requestEmailCode();
    Q_INVOKABLE void verifyEmailCode();
    /// Opens the sign-in page of "yandex", or for any other text that of Google, in the user's browser.
    Q_INVOKABLE void openOAuth(const QString &provider);
    /// Ends a sign-in through the browser. `url` as it came.
    void handleAuthCallback(const QString &url);
    Q_INVOKABLE void continueAsGuest();
    Q_INVOKABLE void signOut();
    static AppLanguage loadLanguage(const Preferences &preferences);
    static AccessMode loadAccessMode(const Preferences &preferences);

    // Coach (coach.cpp)
    /// Asks the backend, or without an account the local pack; nothing while that is under way. What comes of
    /// it is added later, from the event loop.
    Q_INVOKABLE void generateAIPlanAndCards();
    /// Adds the local pack at once, also while the backend is asked.
    Q_INVOKABLE void addLocalCoachPack();
    /// Adds every task and card that has a text, each in front of the one before, and saves both lists.
    /// `source` names, for the user, where the suggestion comes from.
    void applyAISuggestion(const AIStudySuggestion &suggestion, const QString &source);
    QString aiSummaryText(const QString &source, const AIStudySuggestion &suggestion) const;

    /// One heartbeat: looks at the desktop, enforces blocking where it is on, and moves the clock of the
    /// mode.
    void tick();

    /// Puts the local time, a blank and `message` at the front of recentEvents.
    void addEvent(const QString &message);

    // Study moment (studyMoment.cpp)
    StudyMoment validateStudyMoment() const;
    bool isAllowedStudyApp(const QString &name) const;
    /// `url` as the browser wrote it; one without a host is never allowed.
    bool isAllowedStudyURL(const QString &url) const;

    // Application blocking (applicationBlocking.cpp)
    std::vector<RunningApplication> findBlockedRunningApps();
    QString displayName(const RunningApplication &application) const;

    // Progression (progression.cpp)
    /// Adds XP, logs it and saves the progress; below 1 does nothing. `reason` is an English sentence.
    void awardXP(qint64 amount, const QString &reason);
    void markCompletedStudyDay();

Q_SIGNALS:
    void signedInEmailChanged();
    void quizRevealedAnswerChanged();
    void activeStudyCardChanged();
    void userProgressChanged();

private:
    void bindDerivedFields();
    void bindCardFields();
    void bindTaskFields();
    void bindProgressFields();
    void loadStoredState();

    void updateStudyTimer();
    void updateBreakTimer();
    void countStudySecond();
    void tryUnlockBreakIfReady();
    void completeStudySession();
    /// Goes to a mode in which no clock runs, and applies it at once.
    void leaveClocks(Mode mode, const QString &event, const QString &status);
    void abandonSession();
    void forgetSession();

    StudyMoment validateStudySite() const;
    QStringList sortedDisplayNames(const std::vector<RunningApplication> &applications) const;
    void enforceAppBlocks(const std::vector<RunningApplication> &applications);
    void checkBrowsersIfNeeded();
    /// The same for browsers that only this platform reaches; to be called right after it.
    void checkFurtherBrowsersIfNeeded();
    void closeBlockedTabs(const QSet<QString> &browsers);

    void refreshDayIfNeeded();
    void loadTodayStats();
    void saveTodayStats(Durability durability);

    void noteCardsChanged();
    void askNextStudyCard(bool log);
    void judgeActiveCard(int row, const QString &answer);
    void addQuizProof(const StudyCard &card);
    void countQuizProof(const StudyCard &card);
    void noteTasksChanged();

    void migrateBlocklistsIfNeeded();
    void syncDraftsFromConfig();
    void followChangedSettings();
    void saveConfig();
    void saveStudyTasks();
    void saveStudyCards();
    void saveUserProgress();
    void tellFailedSave(const QString &what, const Result<> &saved);

    void refreshLocalizedRuntimeText();
    void enterWithoutAccount(AccessMode mode, const QString &status);
    /// Without a session token or an address, those of before stay.
    void enterWithAccount(const std::optional<QString> &session, const std::optional<QString> &email);
    /// `key` is that of the text in front of the error's own.
    void tellFailedSignIn(QStringView key, const BackendError &error);
    /// `then` for an answer that comes while the controller is there; the backend outlives it.
    std::function<void(const BackendAnswer &)> whileHere(std::function<void(const BackendAnswer &)> then);

    /// What the coach is to write about: as typed, also the spaces around it.
    QString coachTopic() const;
    void addLocalPackOfGuest(const QString &topic);
    void applyCoachAnswer(const QString &topic, const BackendAnswer &answer);
    QString streakOf(qint64 days) const;
    QString text(QStringView key) const;
    QString inBoth(const QString &english, const QString &russian) const;

    ControllerPorts m_ports;
    RecordStore m_records;
    QTimer m_timer; ///< the heartbeat

    Q_OBJECT_BINDABLE_PROPERTY(Self, QuorvelConfig, m_config)
    Q_OBJECT_BINDABLE_PROPERTY(Self, UserProgress, m_userProgress, &Self::userProgressChanged)
    Q_OBJECT_BINDABLE_PROPERTY(Self, std::optional<StudyCard>, m_activeStudyCard,
                               &Self::activeStudyCardChanged)
    Q_OBJECT_BINDABLE_PROPERTY(Self, std::optional<QString>, m_quizRevealedAnswer,
                               &Self::quizRevealedAnswerChanged)
    Q_OBJECT_BINDABLE_PROPERTY(Self, std::optional<QString>, m_signedInEmail, &Self::signedInEmailChanged)
    /// Record files whose last save failed, by their English names, with the reasons.
    using FailedSaves = QMap<QString, QString>;
    Q_OBJECT_BINDABLE_PROPERTY(Self, FailedSaves, m_failedSaves)
    StudyCardModel m_studyCards;
    StudyTaskModel m_studyTasks;
    RecentEventModel m_recentEventModel;

    QString m_currentDayKey; ///< the day that today's counters belong to
    std::unordered_map<qint32, std::chrono::nanoseconds>
        m_terminateFirstSeenByPID;           ///< when each was last told to quit, as the clock's elapsed()
    int m_browserTick = 0;                   ///< heartbeats since the last look at the tabs, 0 to 4
    std::optional<QUuid> m_currentSessionID; ///< there exactly while a session runs
    QSet<QUuid> m_currentSessionProofCardIDs;
    qint64 m_focusSecondsSinceXPAward = 0; ///< counted seconds not yet turned into XP, 0 to 59
};
