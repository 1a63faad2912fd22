#include "gui/foldertreemodel.h"

#include "platform/nativenames.h"

namespace kv {

FolderTreeModel::FolderTreeModel(FolderTree &tree, QObject *parent) : QAbstractItemModel(parent), m_tree(tree)
{
    m_tree.setObserver(this);
    // The start folder was chosen before this model: its closed picture is announced when the next is chosen.
    m_shownSelected = m_tree.selected();
}

FolderTreeModel::~FolderTreeModel()
{
    m_tree.setObserver(nullptr);
}

TreeNode *FolderTreeModel::nodeOf(const QModelIndex &index)
{
    return static_cast<TreeNode *>(index.internalPointer());
}

QModelIndex FolderTreeModel::indexOf(const TreeNode *node) const
{
    if (node == nullptr)
        return {};
    return createIndex(node->parent == nullptr ? 0 : node->row, 0, const_cast<TreeNode *>(node));
}

QModelIndex FolderTreeModel::index(int row, int column, const QModelIndex &parent) const
{
    if (column != 0 || row < 0)
        return {};
    if (!parent.isValid())
        return row == 0 && m_tree.root() != nullptr ? indexOf(m_tree.root()) : QModelIndex();
    const TreeNode *p = nodeOf(parent);
    if (row >= static_cast<int>(p->children.size()))
        return {};
    return indexOf(p->children[static_cast<size_t>(row)].get());
}

QModelIndex FolderTreeModel::parent(const QModelIndex &child) const
{
    if (!child.isValid())
        return {};
    return indexOf(nodeOf(child)->parent);
}

int FolderTreeModel::rowCount(const QModelIndex &parent) const
{
    if (!parent.isValid())
        return m_tree.root() != nullptr ? 1 : 0;
    if (parent.column() != 0)
        return 0;
    return static_cast<int>(nodeOf(parent)->children.size());
}

int FolderTreeModel::columnCount(const QModelIndex &) const
{
    return 1;
}

bool FolderTreeModel::hasChildren(const QModelIndex &parent) const
{
    return rowCount(parent) > 0;
}

QIcon FolderTreeModel::treeImage(int image)
{
    static const std::array<QIcon, 7> icons = [] {
        std::array<QIcon, 7> i;
        const char *names[] = {"drive-fixed", "drive-removable", "drive-cdrom", "folder", "folder-audio",
                               "folder-open", "folder-audio-open"};
        for (size_t n = 0; n < i.size(); ++n)
            i[n] = QIcon(QStringLiteral(":/icons/%1.svg").arg(QLatin1String(names[n])));
        return i;
    }();
    return image >= 1 && image <= 7 ? icons.at(static_cast<size_t>(image - 1)) : QIcon();
}

QVariant FolderTreeModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const TreeNode *node = nodeOf(index);
    switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
        // Undecodable bytes of a name show as U+FFFD; the node keeps the name that reaches the folder.
        return shownName(role == Qt::DisplayRole ? node->text : FolderTree::fullPath(*node));
    case Qt::DecorationRole: {
        const bool selected = node == m_tree.selected() && node->selectedImage != 0;
        return treeImage(selected ? node->selectedImage : node->image);
    }
    default:
        return {};
    }
}

void FolderTreeModel::aboutToReset()
{
    beginResetModel();
    m_shownSelected = nullptr;
}

void FolderTreeModel::resetDone()
{
    endResetModel();
}

void FolderTreeModel::aboutToRemoveChildren(TreeNode &parent, int count)
{
    beginRemoveRows(indexOf(&parent), 0, count - 1);
}

void FolderTreeModel::childrenRemoved(TreeNode &)
{
    endRemoveRows();
}

void FolderTreeModel::aboutToInsertChildren(TreeNode &parent, int count)
{
    beginInsertRows(indexOf(&parent), 0, count - 1);
}

void FolderTreeModel::childrenInserted(TreeNode &)
{
    endInsertRows();
}

void FolderTreeModel::expandedChanged(TreeNode &node)
{
    if (expandRequested)
        expandRequested(indexOf(&node), node.expanded);
}

void FolderTreeModel::selectionChanged(TreeNode *node)
{
    // The selected folder shows its open image; the one before gets its closed image back. The
    // tree hands the selection to a parent before removing its children, so `old` still exists.
    const TreeNode *old = m_shownSelected;
    m_shownSelected = node;
    if (old != nullptr && old != node) {
        const QModelIndex i = indexOf(old);
        Q_EMIT dataChanged(i, i, {Qt::DecorationRole});
    }
    if (node != nullptr) {
        const QModelIndex i = indexOf(node);
        Q_EMIT dataChanged(i, i, {Qt::DecorationRole});
    }
    if (selectRequested)
        selectRequested(indexOf(node));
}

} // namespace kv
