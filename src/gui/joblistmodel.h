#pragma once

#include <vector>

#include <QAbstractTableModel>

#include "engine/encodejob.h"

namespace kv {

class MainController;

// lstCode: one row per job of the current run, its six columns as the run wrote them, bold rows,
// and why a job failed as the tooltip of an "Error" row and of a "Done" row whose codec failed
// (that one also carries a warning picture).
class JobListModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    explicit JobListModel(MainController &controller, QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    // The run changed: a new job list resets the model, otherwise the rows that changed are
    // repainted (a tick changes one or two rows of hundreds).
    void refresh();
    void languageChanged() { Q_EMIT headerDataChanged(Qt::Horizontal, 0, columnCount() - 1); }
    // The failure text of a row; empty when its job did not fail.
    QString failureText(int row) const;

private:
    MainController &m_controller;
    std::vector<EncodeJob> m_shown;
};

} // namespace kv
