#include "StudyTaskModel.h"

#include <algorithm>

int StudyTaskModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_tasks.size());
}

QVariant StudyTaskModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount() || role != TaskRole)
        return {};
    return QVariant::fromValue(m_tasks[size_t(index.row())]);
}

QHash<int, QByteArray> StudyTaskModel::roleNames() const
{
    return {{TaskRole, "task"}};
}

std::optional<int> StudyTaskModel::rowOf(const QUuid &id) const
{
    const auto found =
        std::find_if(m_tasks.begin(), m_tasks.end(), [&](const StudyTask &task) { return task.id == id; });
    return found == m_tasks.end() ? std::nullopt : std::optional(int(found - m_tasks.begin()));
}

void StudyTaskModel::replaceAll(std::deque<StudyTask> tasks)
{
    beginResetModel();
    m_tasks = std::move(tasks);
    endResetModel();
}

void StudyTaskModel::insertFront(const StudyTask &task)
{
    beginInsertRows({}, 0, 0);
    m_tasks.push_front(task);
    endInsertRows();
}

void StudyTaskModel::insertAllFront(std::vector<StudyTask> tasks)
{
    if (tasks.empty())
        return;
    beginInsertRows({}, 0, int(tasks.size()) - 1);
    for (auto &task : tasks)
        m_tasks.push_front(std::move(task));
    endInsertRows();
}

void StudyTaskModel::replace(int row, const StudyTask &task)
{
    m_tasks[size_t(row)] = task;
    Q_EMIT dataChanged(index(row), index(row));
}

void StudyTaskModel::removeAllOf(const QUuid &id)
{
    while (const auto row = rowOf(id))
        takeOut(*row);
}

qint64 StudyTaskModel::removeCompleted()
{
    // From the end, in runs of neighbours, so that a long list of ticked tasks is not moved once for each.
    qint64 removed = 0;
    for (auto last = m_tasks.end(); last != m_tasks.begin();) {
        const auto isCompleted = [](const StudyTask &task) { return task.completedAt.has_value(); };
        const auto end = std::find_if(std::reverse_iterator(last), m_tasks.rend(), isCompleted).base();
        const auto begin = std::find_if_not(std::reverse_iterator(end), m_tasks.rend(), isCompleted).base();
        last = begin;
        if (begin == end)
            continue;
        removed += end - begin;
        beginRemoveRows({}, int(begin - m_tasks.begin()), int(end - m_tasks.begin()) - 1);
        last = m_tasks.erase(begin, end);
        endRemoveRows();
    }
    return removed;
}

void StudyTaskModel::takeOut(int row)
{
    beginRemoveRows({}, row, row);
    m_tasks.erase(m_tasks.begin() + row);
    endRemoveRows();
}
