#pragma once

#include "CardBank.h"

#include <QAbstractListModel>

/// The card bank as a list for the interface. Every change names the rows it concerns.
class StudyCardModel : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role {
        CardRole = Qt::UserRole, ///< "card": the StudyCard, to show and to give back to a command
    };

    using QAbstractListModel::QAbstractListModel;

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    const CardBank &bank() const { return m_bank; }

    void replaceAll(std::deque<StudyCard> cards);
    void insertFront(const StudyCard &card);
    /// As insertFront() of each in turn, so that the last stands first; one insertion of rows.
    void insertAllFront(std::vector<StudyCard> cards);
    void removeAllOf(const QUuid &id);
    /// Counts a judged answer on the card of a row.
    void judge(int row, bool correct, const QDateTime &now);

private:
    CardBank m_bank;
};
