// The sections of the real window, worked by keys: what the fields show and write, and where the keyboard
// goes.
#include "RealWindowTest.h"
#include "accessibleNodes.h"
#include "suite.h"

#include <QPointer>
#include <QQuickItem>

using namespace Qt::StringLiterals;

namespace {

/// A button's text becomes its accessible name only where somebody listens on the desktop.
QString nameOf(const QAccessibleInterface *node)
{
    const auto name = node->text(QAccessible::Name);
    return name.isEmpty() ? node->object()->property("text").toString() : name;
}

} // namespace

class tst_sections : public RealWindowTest
{
    Q_OBJECT

private:
    /// Everything of that role and name, as assistive tools find it, also what is scrolled away.
    QList<QQuickItem *> all(QAccessible::Role role, const QString &name) const
    {
        QList<QQuickItem *> found;
        for (auto *node : visibleNodes(QAccessible::queryAccessibleInterface(m_window.get()))) {
            if (node->role() == role && nameOf(node) == name)
                found.append(qobject_cast<QQuickItem *>(node->object()));
        }
        return found;
    }

    QQuickItem *field(const QString &name) const { return all(QAccessible::EditableText, name).value(0); }
    static QString textOf(const QQuickItem *field) { return field->property("text").toString(); }
    QQuickItem *focusItem() const { return m_window->activeFocusItem(); }

    void open(const QString &section) const
    {
        auto *button = all(QAccessible::RadioButton, section).value(0);
        QVERIFY(button);
        QVERIFY(QMetaObject::invokeMethod(button, "clicked"));
    }

    void type(const QString &text) const
    {
        for (const auto letter : text)
            QTest::keyClick(m_window.get(), letter.toLatin1());
    }

    void fill(const QString &name, const QString &text) const
    {
        auto *input = field(name);
        QVERIFY(input);
        input->forceActiveFocus(Qt::TabFocusReason);
        key(Qt::Key_A, Qt::ControlModifier);
        type(text);
    }

    void addTasks(int count) const
    {
        for (int number = count; number > 0; --number) {
            controller().setNewStudyTaskText(u"Task %1"_s.arg(number));
            controller().addStudyTask();
        }
    }

private Q_SLOTS:
    void initTestCase() { QQuickWindow::setSceneGraphBackend(u"software"_s); }

    void init() { openWindow(); }
    void cleanup() { closeWindow(); }

    void fieldsFollowWhatIsInForce()
    {
        open(u"Settings"_s);
        fill(u"Card proofs"_s, u"+2"_s);
        QCOMPARE(controller().requiredProofsText(), u"+2"_s);
        QCOMPARE(controller().config().requiredProofsToUnlock, 0);
        key(Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(controller().config().requiredProofsToUnlock, 2);
        QCOMPARE(textOf(field(u"Card proofs"_s)), u"2"_s);
        type(u"0"_s); // typing goes on after the text came from outside
        QCOMPARE(controller().requiredProofsText(), u"20"_s);
        open(u"Focus"_s);
        open(u"Settings"_s);
        QCOMPARE(textOf(field(u"Card proofs"_s)), u"20"_s);
    }

    void theSignInScreenCallsOneCommandForEachControl()
    {
        controller().signOut();
        auto &calls = m_harness->backend.calls;
        QVERIFY(field(u"Email"_s)->hasActiveFocus());
        type(u"Ann@b.c"_s);
        QCOMPARE(controller().authEmailText(), u"Ann@b.c"_s);
        key(Qt::Key_Return);
        fill(u"Verification code"_s, u"12 34"_s);
        key(Qt::Key_Return);
        for (const auto &name :
             {u"Send Code"_s, u"Verify Email"_s, u"Continue with Google"_s, u"Continue with Yandex"_s}) {
            auto *button = all(QAccessible::Button, name).value(0);
            QVERIFY2(button, qPrintable(name));
            button->forceActiveFocus(Qt::TabFocusReason);
            key(Qt::Key_Space);
        }
        QStringList paths;
        for (const auto &call : calls)
            paths.append(call.path);
        QCOMPARE(paths,
                 QStringList({u"/auth/email/start"_s, u"/auth/email/verify"_s, u"/auth/email/start"_s,
                              u"/auth/email/verify"_s, u"/auth/google/start"_s, u"/auth/yandex/start"_s}));
        QCOMPARE(calls[3].body, (QJsonObject{{u"email"_s, u"ann@b.c"_s}, {u"code"_s, u"12 34"_s}}));
        QCOMPARE(textOf(field(u"Verification code"_s)), u"12 34"_s);
        QCOMPARE(all(QAccessible::StaticText, u"Opening browser..."_s).size(), 1);
        controller().setLanguage(AppLanguage::Russian);
        QVERIFY(field(u"Почта"_s) && field(u"Код подтверждения"_s));
        m_harness->backend.answer(QJsonObject{{u"session"_s, u"t"_s}}, 3);
        QVERIFY(!field(u"Почта"_s)); // the working layout is there
    }

    void savingByKeyWorksInSettingsAlone()
    {
        controller().setStudyMinutesText(u"30"_s);
        for (const auto &section :
             {u"Focus"_s, u"Progress"_s, u"AI Coach"_s, u"Cards"_s, u"Plan"_s, u"Activity"_s}) {
            open(section);
            key(Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier);
            QCOMPARE(controller().config().studyMinutes, 25);
            QVERIFY(all(QAccessible::Button, u"Save Settings"_s).isEmpty());
        }
        open(u"Settings"_s);
        controller().signOut();
        key(Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(controller().config().studyMinutes, 25);
        controller().continueAsGuest(); // back where it was
        QCOMPARE(all(QAccessible::Button, u"Save Settings"_s).size(), 2);
        key(Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(controller().config().studyMinutes, 30);
    }

    void startingByKeyWorksOnTheDashboardAloneWhileItCan()
    {
        const auto ctrlS = [this] { key(Qt::Key_S, Qt::ControlModifier); };
        for (const auto &section :
             {u"Progress"_s, u"AI Coach"_s, u"Cards"_s, u"Plan"_s, u"Settings"_s, u"Activity"_s}) {
            open(section);
            ctrlS();
            QCOMPARE(controller().mode(), QuorvelController::Mode::Ready);
            key(Qt::Key_L, Qt::ControlModifier);
            QCOMPARE(controller().mode(), QuorvelController::Mode::Locked);
            controller().stopQuorvel();
        }
        controller().setRequiredProofsText(u"1"_s);
        controller().saveSettings();
        open(u"Focus"_s);
        ctrlS();
        QCOMPARE(controller().mode(), QuorvelController::Mode::Ready);
        controller().setRequiredProofsText(u"0"_s);
        controller().saveSettings();
        controller().signOut();
        ctrlS();
        key(Qt::Key_L, Qt::ControlModifier);
        QCOMPARE(controller().mode(), QuorvelController::Mode::Ready);
        controller().continueAsGuest();
        ctrlS();
        QCOMPARE(controller().mode(), QuorvelController::Mode::Studying);
    }

    void aSelectedEventStaysSelectedWhenOthersCome()
    {
        controller().addEvent(u"one"_s);
        open(u"Activity"_s);
        auto *line = all(QAccessible::StaticText, controller().recentEvents().front()).value(0);
        QVERIFY(line);
        QVERIFY(QMetaObject::invokeMethod(line, "selectAll"));
        const auto selected = line->property("selectedText").toString();
        QVERIFY(selected.endsWith(u"one"_s));
        for (int event = 0; event < 7; ++event) {
            controller().addEvent(u"more"_s);
            QCOMPARE(line->property("selectedText").toString(), selected);
        }
        QPointer<QQuickItem> watched = line;
        controller().addEvent(u"the ninth"_s);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!watched);
        QCOMPARE(controller().recentEventModel()->rowCount(), 8);
        QCOMPARE(controller().recentEventModel()->lines(), controller().recentEvents());
    }

    void theCoachsWordsCanBeSelected()
    {
        open(u"AI Coach"_s);
        fill(u"Topic or goal, e.g. math derivatives for tomorrow exam"_s, u"Latin"_s);
        auto *button = all(QAccessible::Button, u"Local Pack"_s).value(0);
        QVERIFY(button);
        button->forceActiveFocus(Qt::TabFocusReason);
        key(Qt::Key_Space);
        QVERIFY(controller().studyTaskCount() > 0);
        auto *words = all(QAccessible::StaticText, controller().aiOutputText()).value(0);
        QVERIFY(words);
        words->forceActiveFocus(Qt::TabFocusReason);
        key(Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(words->property("selectedText").toString().replace(QChar::ParagraphSeparator, u'\n'),
                 controller().aiOutputText());
    }

    void linesOfAnEditorStandOnTheirGrid()
    {
        controller().setProModeEnabled(true);
        controller().setBlockedAppsText(u"a\nb\nc"_s);
        open(u"Settings"_s);
        auto *editor = field(u"Blocked apps"_s);
        QVERIFY(editor);
        const auto contentHeight = [editor] { return editor->property("contentHeight").toReal(); };
        QCOMPARE(contentHeight(), 66.0);
        editor->forceActiveFocus(Qt::TabFocusReason);
        key(Qt::Key_End, Qt::ControlModifier);
        key(Qt::Key_Return);
        QCOMPARE(contentHeight(), 88.0);
        key(Qt::Key_A, Qt::ControlModifier);
        type(u"x"_s);
        QCOMPARE(contentHeight(), 22.0);
        key(Qt::Key_Z, Qt::ControlModifier); // brings the text back, and nothing else
        QCOMPARE(controller().blockedAppsText(), u"a\nb\nc\n"_s);
        controller().setBlockedAppsText(u"d\ne"_s);
        QCOMPARE(contentHeight(), 44.0);
    }

    void proModeShowsTheEditors()
    {
        open(u"Settings"_s);
        QVERIFY(!field(u"Blocked apps"_s));
        all(QAccessible::CheckBox, u"Pro mode"_s).value(0)->forceActiveFocus(Qt::TabFocusReason);
        key(Qt::Key_Space);
        QVERIFY(controller().proModeEnabled());
        QVERIFY(field(u"Idle pause seconds"_s));
        auto *editor = field(u"Blocked apps"_s);
        QVERIFY(editor);
        editor->forceActiveFocus();
        key(Qt::Key_Tab);
        QVERIFY(field(u"Blocked Domains"_s)->hasActiveFocus());
        key(Qt::Key_Backtab, Qt::ShiftModifier);
        QVERIFY(editor->hasActiveFocus());
        key(Qt::Key_A, Qt::ControlModifier);
        type(u"Chess"_s);
        QCOMPARE(controller().blockedAppsText(), u"Chess"_s);
        all(QAccessible::CheckBox, u"Pro mode"_s).value(0)->forceActiveFocus(Qt::TabFocusReason);
        key(Qt::Key_Return);
        QVERIFY(!controller().proModeEnabled());
        QVERIFY(!field(u"Blocked apps"_s));
    }

    void anEditorWritesBackOnlyWhatWasTyped()
    {
        controller().setProModeEnabled(true);
        open(u"Settings"_s);
        const auto odd = u"Chess\u2029Go"_s; // comes out of the editor with a line feed
        controller().setBlockedAppsText(odd);
        QCOMPARE(textOf(field(u"Blocked apps"_s)), u"Chess\nGo"_s);
        QCOMPARE(controller().blockedAppsText(), odd);
    }

    void returnAddsACardAndClearsTheFields()
    {
        open(u"Cards"_s);
        fill(u"Topic, blank = current topic"_s, u"Maths"_s);
        fill(u"Question"_s, u"1+1?"_s);
        fill(u"Expected answer"_s, u"two|2"_s);
        key(Qt::Key_Return);
        QCOMPARE(controller().studyCards().size(), size_t(1));
        QCOMPARE(textOf(field(u"Question"_s)), QString());
        QCOMPARE(textOf(field(u"Expected answer"_s)), QString());
        QVERIFY(field(u"Expected answer"_s)->hasActiveFocus());
        fill(u"Answer from memory"_s, u"three"_s);
        key(Qt::Key_Return);
        QCOMPARE(textOf(field(u"Answer from memory"_s)), u"three"_s);
        QCOMPARE(all(QAccessible::StaticText, u"two|2"_s).size(), 1);
        QVERIFY(!all(QAccessible::StaticText, u"OK 0 / Miss 1"_s).isEmpty());
    }

    void feedbackIsShownWithoutACard()
    {
        open(u"Cards"_s);
        key(Qt::Key_Tab);
        fill(u"Expected answer"_s, u"alone"_s);
        key(Qt::Key_Return);
        QCOMPARE(all(QAccessible::StaticText, controller().quizFeedback()).size(), 1);
        QVERIFY(!field(u"Answer from memory"_s));
    }

    void onlyRowsInSightExist()
    {
        addTasks(500);
        open(u"Plan"_s);
        QTRY_VERIFY(all(QAccessible::Button, u"Done"_s).size() > 3);
        QVERIFY2(all(QAccessible::Button, u"Done"_s).size() < 30,
                 qPrintable(QString::number(all(QAccessible::Button, u"Done"_s).size())));
    }

    void theFootStandsUnderTheLastRowAndCanBeClicked()
    {
        addTasks(40);
        controller().completeStudyTask(controller().studyTasks().back());
        open(u"Plan"_s);
        const auto placeOf = [](const QQuickItem *item) {
            return item->mapRectToScene(QRectF(0, 0, item->width(), item->height()));
        };
        auto *clear = all(QAccessible::Button, u"Clear Completed"_s).value(0);
        QVERIFY(clear);
        QVERIFY(placeOf(clear).top() > m_window->height());
        QTRY_VERIFY([&] { // the length of what has not been made yet is an estimate
            clear->forceActiveFocus(Qt::TabFocusReason);
            key(Qt::Key_PageDown);
            return placeOf(clear).bottom() < m_window->height() &&
                   all(QAccessible::Button, u"Reopen"_s).size() == 1;
        }());
        const auto lastRow = placeOf(all(QAccessible::Button, u"Reopen"_s).value(0));
        QVERIFY(placeOf(clear).top() > lastRow.bottom());
        QVERIFY(placeOf(clear).top() < lastRow.bottom() + 60);
        QTest::mouseClick(m_window.get(), Qt::LeftButton, Qt::NoModifier, placeOf(clear).center().toPoint());
        QCOMPARE(controller().completedTaskCount(), 0);
        QCOMPARE(controller().studyTasks().size(), size_t(39));
    }

    void arrowsWalkTheRows()
    {
        addTasks(3);
        open(u"Plan"_s);
        QTRY_COMPARE(all(QAccessible::Button, u"Done"_s).size(), 3);
        all(QAccessible::Button, u"Done"_s).value(0)->forceActiveFocus(Qt::TabFocusReason);
        key(Qt::Key_Down);
        key(Qt::Key_Down);
        key(Qt::Key_Down); // there is no fourth
        key(Qt::Key_Up);
        key(Qt::Key_Return);
        QVERIFY(controller().studyTasks()[1].completedAt.has_value());
        QCOMPARE(controller().completedTaskCount(), 1);
        QTRY_COMPARE(all(QAccessible::Button, u"Reopen"_s).size(), 1);
        key(Qt::Key_Space);
        QCOMPARE(controller().completedTaskCount(), 0);
    }

    void whatCountsStandsStillWhileNobodySeesIt()
    {
        controller().startStudy();
        std::vector<const QQuickItem *> counting;
        for (const auto *item : m_window->rootObject()->findChildren<QQuickItem *>()) {
            if (item->metaObject()->indexOfProperty("shown") >= 0)
                counting.push_back(item);
        }
        const auto shown = [&] {
            QVariantList values;
            for (const auto *item : counting)
                values.append(item->property("shown"));
            return values;
        };
        const auto seen = shown();
        QVERIFY(seen.contains(controller().property("primaryTimerText")));
        QVERIFY(seen.contains(controller().property("sessionProgress")));
        m_window->hide();
        m_harness->seconds(5);
        QCOMPARE(shown(), seen);
        m_window->show();
        const auto now = shown();
        QVERIFY(now != seen);
        QVERIFY(now.contains(controller().property("primaryTimerText")));
        QVERIFY(now.contains(controller().property("sessionProgress")));
        m_harness->seconds(1);
        QVERIFY(shown() != now);
    }

    void theKeyboardStaysInTheListWhenARowGoes()
    {
        addTasks(2);
        open(u"Plan"_s);
        QTRY_COMPARE(all(QAccessible::Button, u"Delete"_s).size(), 2);
        all(QAccessible::Button, u"Delete"_s).value(0)->forceActiveFocus(Qt::TabFocusReason);
        key(Qt::Key_Return);
        QCOMPARE(controller().studyTasks().size(), size_t(1));
        key(Qt::Key_Return); // on the row that followed
        QVERIFY(controller().studyTasks().front().completedAt.has_value());
        key(Qt::Key_Tab);
        key(Qt::Key_Return);
        QVERIFY(controller().studyTasks().empty());
    }
};

QUORVEL_TEST(tst_sections, QGuiApplication)
#include "tst_sections.moc"
