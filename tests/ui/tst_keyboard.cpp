// The window without a pointer and without eyes: where the Tab key goes, what shows that it is there, and
// what assistive tools are told of each thing.
#include "ProductSection.h"
#include "RealWindowTest.h"
#include "accessibleNodes.h"
#include "suite.h"

#include <QPainter>
#include <QQmlComponent>
#include <QQuickItem>

using namespace Qt::StringLiterals;

namespace {

constexpr int mostStops = 80;
constexpr int ringReach = 4; // pixels that a ring or halo may stand outside its control

/// What has the keyboard once, and what assistive tools hear then.
struct Stop
{
    QQuickItem *item;
    QAccessible::Role role;
    QString name;

    bool operator==(const Stop &) const = default;
};

bool isCyrillic(const QString &text)
{
    return std::any_of(text.begin(), text.end(),
                       [](QChar letter) { return letter.script() == QChar::Script_Cyrillic; });
}

/// From the outermost item to the item itself.
QList<QQuickItem *> pathTo(QQuickItem *item)
{
    QList<QQuickItem *> path;
    for (; item; item = item->parentItem())
        path.prepend(item);
    return path;
}

/// Whether a reader meets `first` before `second`: of the parts in which they stand, the one that is higher,
/// or beside it the one on the left.
bool readsBefore(QQuickItem *first, QQuickItem *second)
{
    const auto one = pathTo(first);
    const auto other = pathTo(second);
    qsizetype depth = 0;
    while (depth < one.size() && depth < other.size() && one[depth] == other[depth])
        ++depth;
    if (depth == 0 || depth == one.size() || depth == other.size())
        return false;
    const auto *common = one[depth - 1];
    const auto placeOf = [common](QQuickItem *part) {
        return part->mapRectToItem(common, QRectF(0, 0, part->width(), part->height()));
    };
    auto place = placeOf(one[depth]);
    auto otherPlace = placeOf(other[depth]);
    if (place.intersects(otherPlace)) { // one stands over the other, as a list's foot does: only they count
        place = placeOf(first);
        otherPlace = placeOf(second);
    }
    const bool beside = place.top() < otherPlace.bottom() && otherPlace.top() < place.bottom();
    return beside ? place.left() < otherPlace.left() : place.top() < otherPlace.top();
}

/// What a ring or halo is drawn around: the field, of what stands in one.
QQuickItem *frameOf(QQuickItem *item)
{
    for (auto *ancestor = item; ancestor; ancestor = ancestor->parentItem()) {
        const QString type = QString::fromLatin1(ancestor->metaObject()->className());
        if (type.startsWith("GlassField"_L1) || type.startsWith("GlassTextArea"_L1))
            return ancestor;
    }
    return item;
}

} // namespace

class tst_keyboard : public RealWindowTest
{
    Q_OBJECT

private:
    /// One key of a walk, and the frame that follows it, for which a list makes the rows that came in sight.
    void take(Qt::Key step) const
    {
        key(step, step == Qt::Key_Tab ? Qt::NoModifier : Qt::ShiftModifier);
        m_window->grabWindow();
        QCoreApplication::processEvents();
    }

    QList<QAccessibleInterface *> nodes() const
    {
        return visibleNodes(QAccessible::queryAccessibleInterface(m_window.get()));
    }

    QQuickItem *find(QAccessible::Role role, const QString &name) const
    {
        for (auto *node : nodes()) {
            if (node->role() == role && node->text(QAccessible::Name) == name)
                return qobject_cast<QQuickItem *>(node->object());
        }
        return nullptr;
    }

    void focus(QAccessible::Role role, const QString &name) const
    {
        auto *item = find(role, name);
        QVERIFY2(item, qPrintable(name));
        item->forceActiveFocus(Qt::TabFocusReason);
    }

    void open(ProductSection section) const
    {
        m_window->rootObject()->setProperty("selection", int(section));
        QCoreApplication::processEvents(); // what is laid out later
    }

    Stop stop() const
    {
        auto *item = m_window->activeFocusItem();
        const auto *node = item ? QAccessible::queryAccessibleInterface(item) : nullptr;
        return {item, node ? node->role() : QAccessible::NoRole,
                node ? node->text(QAccessible::Name) : QString()};
    }

    /// Everything that the key reaches until it is where it was first.
    QList<Stop> walk(Qt::Key step = Qt::Key_Tab) const
    {
        QList<Stop> stops;
        take(step);
        for (auto next = stop(); !stops.contains(next) && stops.size() < mostStops; next = stop()) {
            stops.append(next);
            take(step);
        }
        return stop() == stops.front() ? stops : QList<Stop>(); // else the way back was never found
    }

    /// The walk from the first control of the screen on.
    QList<Stop> walkFromTop(const QString &first) const
    {
        auto stops = walk();
        const auto start = std::find_if(stops.begin(), stops.end(),
                                        [&first](const Stop &next) { return next.name == first; });
        std::rotate(stops.begin(), start, stops.end());
        return stops;
    }

    /// The window around the control that has the keyboard, without the control itself.
    QImage surroundings(QQuickItem *item) const
    {
        auto *frame = frameOf(item);
        const auto place = frame->mapRectToScene(QRectF(0, 0, frame->width(), frame->height())).toRect();
        auto image = m_window->grabWindow();
        QPainter(&image).fillRect(place.adjusted(3, 3, -3, -3), Qt::black);
        return image.copy(place.adjusted(-ringReach, -ringReach, ringReach, ringReach));
    }

    void checkOrder(const QList<Stop> &stops) const
    {
        for (qsizetype index = 1; index < stops.size(); ++index) {
            QVERIFY2(readsBefore(stops[index - 1].item, stops[index].item),
                     qPrintable(u"%1 before %2"_s.arg(stops[index - 1].name, stops[index].name)));
        }
    }

    void checkRings(const QList<Stop> &stops) const
    {
        for (const auto &next : stops) {
            next.item->forceActiveFocus(Qt::TabFocusReason);
            const auto with = surroundings(next.item);
            next.item->setFocus(false);
            QVERIFY2(with != surroundings(next.item), qPrintable(u"no ring: "_s + next.name));
            next.item->forceActiveFocus(Qt::TabFocusReason);
        }
    }

    void checkNames(const QList<Stop> &stops, AppLanguage language) const
    {
        static const QStringList fixed{u"ENG"_s, u"RUS"_s};
        for (const auto &next : stops) {
            const auto what =
                qPrintable(QString::fromLatin1(next.item->metaObject()->className()) + u": "_s + next.name);
            QVERIFY2(next.role != QAccessible::NoRole && next.role != QAccessible::Client, what);
            QVERIFY2(!next.name.trimmed().isEmpty(), what);
            const bool isTranslated = !fixed.contains(next.name) && next.role != QAccessible::StaticText;
            if (isTranslated)
                QVERIFY2(isCyrillic(next.name) == (language == AppLanguage::Russian), what);
        }
    }

    void checkTree() const
    {
        for (const auto *node : nodes()) {
            const auto what = node->object() ? node->object()->metaObject()->className() : "?";
            QVERIFY2(node->role() != QAccessible::NoRole && node->role() != QAccessible::Client, what);
            if (!node->state().offscreen)
                QVERIFY2(!node->text(QAccessible::Name).trimmed().isEmpty(), what);
        }
    }

    void fillIn() const
    {
        auto &data = controller();
        for (const auto &question : {u"1+1?"_s, u"2+2?"_s}) {
            data.setNewCardTopicText(u"Maths"_s);
            data.setNewCardPromptText(question);
            data.setNewCardAnswerText(u"4"_s);
            data.addStudyCard();
            data.setNewStudyTaskText(u"Read "_s + question);
            data.addStudyTask();
        }
        data.completeStudyTask(data.studyTasks().front());
        data.selectNextStudyCard(true);
        data.setProModeEnabled(true);
    }

private Q_SLOTS:
    void initTestCase()
    {
        QQuickWindow::setSceneGraphBackend(u"software"_s);
        QAccessible::setActive(true);
    }

    void init() { openWindow(); }
    void cleanup() { closeWindow(); }

    void tabWalksEverySection_data()
    {
        QTest::addColumn<int>("section");
        QTest::addColumn<AppLanguage>("language");
        for (const auto section : allProductSections) {
            const auto name = rawValue(section).toUtf8();
            QTest::newRow(name + " in English") << int(section) << AppLanguage::English;
            QTest::newRow(name + " in Russian") << int(section) << AppLanguage::Russian;
        }
    }
    void tabWalksEverySection()
    {
        QFETCH(int, section);
        QFETCH(AppLanguage, language);
        controller().setLanguage(language);
        fillIn();
        open(ProductSection(section));
        const auto stops = walkFromTop(u"ENG"_s);
        QVERIFY(stops.size() > qsizetype(allProductSections.size()) + 4); // the sidebar and the command bar
        checkOrder(stops);
        checkNames(stops, language);
        checkTree();
        checkRings(stops);
        QStringList forth;
        for (const auto &next : stops)
            forth.append(next.name);
        auto back = walk(Qt::Key_Backtab);
        std::reverse(back.begin(), back.end());
        std::rotate(back.begin(), std::find(back.begin(), back.end(), stops.front()), back.end());
        QStringList names;
        for (const auto &next : back)
            names.append(next.name);
        QCOMPARE(names.join(u'\n'), forth.join(u'\n'));
    }

    void tabWalksTheSignInScreen()
    {
        controller().signOut();
        for (const auto language : {AppLanguage::English, AppLanguage::Russian}) {
            controller().setLanguage(language);
            const auto stops = walkFromTop(u"ENG"_s);
            QCOMPARE(stops.size(), 9);
            checkOrder(stops);
            checkNames(stops, language);
            checkTree();
            checkRings(stops);
        }
    }

    void rowsThatComeLaterStandInTheSameOrder()
    {
        open(ProductSection::Plan);
        fillIn();
        controller().setNewStudyTaskText(u"Write"_s);
        focus(QAccessible::Button, u"Add Task"_s);
        key(Qt::Key_Space);
        QTRY_VERIFY(find(QAccessible::ListItem, u"Write"_s));
        checkOrder(walkFromTop(u"ENG"_s));
    }

    void spaceAndReturnPressEveryKindOfButton_data()
    {
        QTest::addColumn<Qt::Key>("pressing");
        QTest::newRow("space") << Qt::Key_Space;
        QTest::newRow("return") << Qt::Key_Return;
        QTest::newRow("enter") << Qt::Key_Enter;
    }
    void spaceAndReturnPressEveryKindOfButton()
    {
        QFETCH(Qt::Key, pressing);
        fillIn();
        focus(QAccessible::Button, u"Manual Lock"_s);
        key(pressing);
        QCOMPARE(controller().mode(), QuorvelController::Mode::Locked);
        focus(QAccessible::Button, u"Start Study"_s);
        key(pressing);
        QCOMPARE(controller().mode(), QuorvelController::Mode::Studying);
        focus(QAccessible::RadioButton, u"Settings"_s);
        key(pressing);
        QVERIFY(find(QAccessible::Heading, u"Settings"_s));
        focus(QAccessible::CheckBox, u"Pro mode"_s);
        key(pressing);
        QVERIFY(!controller().proModeEnabled());
        focus(QAccessible::RadioButton, u"RUS"_s);
        key(pressing);
        QCOMPARE(controller().language(), AppLanguage::Russian);
        open(ProductSection::Plan);
        focus(QAccessible::Button, u"Готово"_s);
        key(pressing);
        QCOMPARE(controller().completedTaskCount(), 2);
    }

    void whatIsGivenTheKeyboardTakesLettersAtOnce()
    {
        open(ProductSection::Rules);
        controller().setProModeEnabled(true);
        controller().setBlockedAppsText({});
        auto *const input = find(QAccessible::EditableText, u"Blocked apps"_s);
        QVERIFY(input);
        auto *const area = frameOf(input);
        QVERIFY(area != input);
        area->forceActiveFocus(Qt::TabFocusReason);
        key(Qt::Key_A);
        QCOMPARE(controller().blockedAppsText(), u"a"_s);
    }

    void escapeLeavesTheKeyboardWhereItIs()
    {
        fillIn();
        open(ProductSection::Rules);
        focus(QAccessible::EditableText, u"Blocked apps"_s);
        auto *const editor = m_window->activeFocusItem();
        key(Qt::Key_Escape);
        QCOMPARE(m_window->activeFocusItem(), editor);
        key(Qt::Key_Tab);
        QVERIFY(m_window->activeFocusItem() != editor);
    }

    void aDisabledButtonIsNoStopAndSaysSo()
    {
        controller().startStudy();
        auto *button = find(QAccessible::Button, u"Start Study"_s);
        QVERIFY(button);
        const auto *node = QAccessible::queryAccessibleInterface(button);
        QVERIFY(node->state().disabled && !node->state().focusable);
        for (const auto &next : walk())
            QVERIFY(next.item != button);
        controller().stopQuorvel();
        QVERIFY(!node->state().disabled && node->state().focusable);
    }

    void theChosenOneOfAGroupIsChecked()
    {
        const auto isChecked = [this](const QString &name) {
            auto *item = find(QAccessible::RadioButton, name);
            return item && QAccessible::queryAccessibleInterface(item)->state().checked;
        };
        QVERIFY(isChecked(u"ENG"_s) && !isChecked(u"RUS"_s));
        QVERIFY(isChecked(u"Focus"_s) && !isChecked(u"Plan"_s));
        focus(QAccessible::RadioButton, u"Plan"_s);
        key(Qt::Key_Space);
        QVERIFY(!isChecked(u"Focus"_s) && isChecked(u"Plan"_s));
        key(Qt::Key_Space); // again
        QVERIFY(isChecked(u"Plan"_s));
        controller().setLanguage(AppLanguage::Russian); // not by the switch
        QVERIFY(!isChecked(u"ENG"_s) && isChecked(u"RUS"_s));
        controller().setLanguage(AppLanguage::English);
        QVERIFY(isChecked(u"ENG"_s) && !isChecked(u"RUS"_s));
    }

    void lessMovementIsFollowed()
    {
        QQmlComponent look(m_window->engine());
        look.setData("import QtQml; import Quorvel.Ui\n"
                     "QtObject { readonly property bool less: AppTheme.reducedMotion\n"
                     "           readonly property int press: AppTheme.pressDuration }",
                     {});
        const std::unique_ptr<QObject> theme(look.create());
        QVERIFY2(theme, qPrintable(look.errorString()));
        QCOMPARE(theme->property("press").toInt(), 120);
        m_support->setReducedMotion(true);
        QVERIFY(theme->property("less").toBool());
        QCOMPARE(theme->property("press").toInt(), 0);
        m_support->setReducedMotion(false);
        QCOMPARE(theme->property("press").toInt(), 120);
    }
};

QUORVEL_TEST(tst_keyboard, QGuiApplication)
#include "tst_keyboard.moc"
