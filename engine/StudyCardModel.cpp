#include "StudyCardModel.h"

int StudyCardModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_bank.cards().size());
}

QVariant StudyCardModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount() || role != CardRole)
        return {};
    return QVariant::fromValue(m_bank.cards()[size_t(index.row())]);
}

QHash<int, QByteArray> StudyCardModel::roleNames() const
{
    return {{CardRole, "card"}};
}

void StudyCardModel::replaceAll(std::deque<StudyCard> cards)
{
    beginResetModel();
    m_bank = CardBank(std::move(cards));
    endResetModel();
}

void StudyCardModel::insertFront(const StudyCard &card)
{
    beginInsertRows({}, 0, 0);
    m_bank.insertFront(card);
    endInsertRows();
}

void StudyCardModel::insertAllFront(std::vector<StudyCard> cards)
{
    if (cards.empty())
        return;
    beginInsertRows({}, 0, int(cards.size()) - 1);
    for (auto &card : cards)
        m_bank.insertFront(std::move(card));
    endInsertRows();
}

void StudyCardModel::removeAllOf(const QUuid &id)
{
    while (const auto row = m_bank.rowOf(id)) {
        beginRemoveRows({}, *row, *row);
        m_bank.removeRow(*row);
        endRemoveRows();
    }
}

void StudyCardModel::judge(int row, bool correct, const QDateTime &now)
{
    m_bank.judge(row, correct, now);
    Q_EMIT dataChanged(index(row), index(row));
}
