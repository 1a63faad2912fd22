#include "gui/filelistmodel.h"

#include <QFont>

#include "app/maincontroller.h"
#include "platform/nativenames.h"

namespace kv {

namespace {

// Numbers line up on the right, names and channel words on the left; captions as their cells.
QVariant columnAlignment(int column)
{
    if (column >= 1 && column <= 4)
        return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
    return {};
}

} // namespace

FileListModel::FileListModel(MainController &controller, QObject *parent)
    : QAbstractTableModel(parent), m_controller(controller)
{
}

int FileListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_controller.fileList().rows.size());
}

int FileListModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : MediaInfo::ColumnCount;
}

QVariant FileListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const FileRow &row = m_controller.fileList().rows[static_cast<size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
        return index.column() == 0 ? shownName(row.info[0]) : row.info[index.column()];
    case Qt::CheckStateRole:
        if (index.column() == 0)
            return row.checked ? Qt::Checked : Qt::Unchecked;
        break;
    case Qt::TextAlignmentRole:
        return columnAlignment(index.column());
    case Qt::FontRole:
        if (row.bold) {
            QFont bold;
            bold.setBold(true);
            return bold;
        }
        break;
    default:
        break;
    }
    return {};
}

bool FileListModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::CheckStateRole || index.column() != 0 || !checkIndex(index, CheckIndexOption::IndexIsValid))
        return false;
    m_controller.setRowChecked(index.row(), value.value<Qt::CheckState>() == Qt::Checked);
    Q_EMIT dataChanged(index, index, {Qt::CheckStateRole});
    return true;
}

Qt::ItemFlags FileListModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags f = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    if (index.column() == 0)
        f |= Qt::ItemIsUserCheckable;
    return f;
}

QVariant FileListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= MediaInfo::ColumnCount)
        return {};
    if (role == Qt::DisplayRole)
        return m_controller.text().listColumns.at(static_cast<size_t>(section));
    if (role == Qt::TextAlignmentRole)
        return columnAlignment(section);
    return {};
}

} // namespace kv
