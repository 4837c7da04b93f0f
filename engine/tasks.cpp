// The study plan: a checklist of next steps.
#include "Clock.h"
#include "QuorvelController.h"
#include "commandLog.h"
#include "recordTime.h"

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace {

/// XP for a ticked task.
constexpr qint64 taskXP = 3;

/// Open tasks that the dashboard shows.
constexpr qsizetype previewedTasks = 3;

bool isCompleted(const StudyTask &task)
{
    return task.completedAt.has_value();
}

/// Titles of the first open tasks.
QStringList openTitles(const std::deque<StudyTask> &tasks)
{
    QStringList titles;
    for (const auto &task : tasks) {
        if (titles.size() == previewedTasks)
            break;
        if (!isCompleted(task))
            titles.append(task.title);
    }
    return titles;
}

} // namespace

void QuorvelController::bindTaskFields()
{
    m_studyTaskCount.setBinding([this] {
        (void)m_studyTasksRevision.value();
        return qint64(studyTasks().size());
    });
    m_completedTaskCount.setBinding([this] {
        (void)m_studyTasksRevision.value();
        return qint64(std::count_if(studyTasks().begin(), studyTasks().end(), isCompleted));
    });
    m_nextOpenTaskTitles.setBinding([this] {
        (void)m_studyTasksRevision.value();
        return openTitles(studyTasks());
    });
}

void QuorvelController::addStudyTask()
{
    qCDebug(logCommand, "addStudyTask");
    const auto title = m_newStudyTaskText.value().trimmed();
    if (title.isEmpty())
        return;
    StudyTask task;
    task.id = QUuid::createUuid();
    task.title = title;
    task.createdAt = recordTime(m_ports.clock.now());
    m_studyTasks.insertFront(task);
    noteTasksChanged();
    m_newStudyTaskText = QString();
    saveStudyTasks();
    addEvent(u"Task added."_s);
}

void QuorvelController::completeStudyTask(const StudyTask &task)
{
    qCDebug(logCommand, "completeStudyTask");
    const auto row = m_studyTasks.rowOf(task.id);
    if (!row)
        return;
    auto changed = studyTasks()[size_t(*row)];
    changed.completedAt = recordTime(m_ports.clock.now());
    changed.completedSessionID.reset(); // ticked by hand, it belongs to no session
    m_studyTasks.replace(*row, changed);
    noteTasksChanged();
    saveStudyTasks();
    awardXP(taskXP, u"Study task completed."_s);
    addEvent(u"Task completed: "_s + changed.title);
}

void QuorvelController::reopenStudyTask(const StudyTask &task)
{
    qCDebug(logCommand, "reopenStudyTask");
    const auto row = m_studyTasks.rowOf(task.id);
    if (!row)
        return;
    auto changed = studyTasks()[size_t(*row)];
    changed.completedAt.reset();
    changed.completedSessionID.reset();
    m_studyTasks.replace(*row, changed);
    noteTasksChanged();
    saveStudyTasks();
    addEvent(u"Task reopened."_s);
}

void QuorvelController::clearCompletedTasks()
{
    qCDebug(logCommand, "clearCompletedTasks");
    const auto removed = m_studyTasks.removeCompleted();
    noteTasksChanged();
    saveStudyTasks();
    addEvent(u"Cleared "_s + QString::number(removed) + u" completed tasks."_s);
}

void QuorvelController::deleteStudyTask(const StudyTask &task)
{
    qCDebug(logCommand, "deleteStudyTask");
    const auto id = task.id; // the task may live in the list that shrinks
    m_studyTasks.removeAllOf(id);
    noteTasksChanged();
    saveStudyTasks();
    addEvent(u"Task deleted."_s);
}

std::vector<StudyTask> QuorvelController::completedStudyTasks() const
{
    std::vector<StudyTask> completed;
    std::copy_if(studyTasks().begin(), studyTasks().end(), std::back_inserter(completed), isCompleted);
    return completed;
}

void QuorvelController::noteTasksChanged()
{
    m_studyTasksRevision = m_studyTasksRevision + 1;
}
