#pragma once

#include <QAbstractListModel>
#include <QStringList>

/// The event log as a list for the interface, newest first. A line keeps its row object while others come and
/// go, so that what a user has selected in it stays selected.
class RecentEventModel : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role {
        LineRole = Qt::UserRole, ///< "line": time, blank and message
    };

    using QAbstractListModel::QAbstractListModel;

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    const QStringList &lines() const { return m_lines; }

    /// Puts `line` in front and drops the oldest beyond `most` lines.
    void prepend(const QString &line, qsizetype most);

private:
    QStringList m_lines;
};
