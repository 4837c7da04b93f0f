#include "RecentEventModel.h"

int RecentEventModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_lines.size());
}

QVariant RecentEventModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount() || role != LineRole)
        return {};
    return m_lines.at(index.row());
}

QHash<int, QByteArray> RecentEventModel::roleNames() const
{
    return {{LineRole, "line"}};
}

void RecentEventModel::prepend(const QString &line, qsizetype most)
{
    beginInsertRows({}, 0, 0);
    m_lines.prepend(line);
    endInsertRows();
    if (m_lines.size() <= most)
        return;
    beginRemoveRows({}, int(most), int(m_lines.size()) - 1);
    m_lines.resize(most);
    endRemoveRows();
}
