#pragma once

#include "StudyTask.h"

#include <QAbstractListModel>

#include <deque>
#include <vector>

/// The study plan as a list for the interface, newest first. Every change names the rows it concerns.
class StudyTaskModel : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role {
        TaskRole = Qt::UserRole, ///< "task": the StudyTask, to show and to give back to a command
    };

    using QAbstractListModel::QAbstractListModel;

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    const std::deque<StudyTask> &tasks() const { return m_tasks; }

    /// The row of the first task with that id.
    std::optional<int> rowOf(const QUuid &id) const;

    void replaceAll(std::deque<StudyTask> tasks);
    void insertFront(const StudyTask &task);
    /// As insertFront() of each in turn, so that the last stands first; one insertion of rows.
    void insertAllFront(std::vector<StudyTask> tasks);
    void replace(int row, const StudyTask &task);
    void removeAllOf(const QUuid &id);
    /// Removes every completed task; gives their number.
    qint64 removeCompleted();

private:
    void takeOut(int row);

    std::deque<StudyTask> m_tasks;
};
