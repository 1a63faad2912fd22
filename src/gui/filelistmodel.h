#pragma once

#include <QAbstractTableModel>

namespace kv {

class MainController;

// lstMain: one row per listed file, the six columns as the readers wrote them, and a check box
// in the first column whose clicks re-run the statistics.
class FileListModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    explicit FileListModel(MainController &controller, QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    void beginRefill() { beginResetModel(); }
    void endRefill() { endResetModel(); }
    // A row's font changed: the player marks the row that plays in bold.
    void rowChanged(int row) { Q_EMIT dataChanged(index(row, 0), index(row, columnCount() - 1), {Qt::FontRole}); }
    void languageChanged() { Q_EMIT headerDataChanged(Qt::Horizontal, 0, columnCount() - 1); }

private:
    MainController &m_controller;
};

} // namespace kv
