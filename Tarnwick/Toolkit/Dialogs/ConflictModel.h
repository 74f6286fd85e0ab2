#pragma once

#include "Tarnwick/Operations/ConflictAnswers.h"

#include <QAbstractTableModel>

namespace tw {

/// Taken names as rows: what is to be written, what is there, and the user's answer.
class ConflictModel final : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column { name, arriving, present, answer, columns };

    ConflictModel(std::vector<NameConflict> names, QObject *parent);

    ConflictAnswers const &answers() const noexcept { return given; }

    void setAnswer(int row, std::optional<NameConflict::Answer> answer);
    void answerRest(NameConflict::Answer answer);

    int rowCount(QModelIndex const &parent = {}) const override;
    int columnCount(QModelIndex const &parent = {}) const override;
    QVariant data(QModelIndex const &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    QString text(NameConflict const &conflict, std::size_t row, int column) const;

    ConflictAnswers given;
};

} // namespace tw
