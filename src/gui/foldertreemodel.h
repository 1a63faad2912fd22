#pragma once

#include <array>
#include <functional>

#include <QAbstractItemModel>
#include <QIcon>

#include "browser/foldertree.h"

namespace kv {

// tvMain's model: follows the core's folder tree row by row, so open branches stay open while a
// folder below them is listed again.
class FolderTreeModel : public QAbstractItemModel, public TreeObserver
{
    Q_OBJECT

public:
    explicit FolderTreeModel(FolderTree &tree, QObject *parent = nullptr);
    ~FolderTreeModel() override;

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    bool hasChildren(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;

    QModelIndex indexOf(const TreeNode *node) const;
    static TreeNode *nodeOf(const QModelIndex &index);
    // The image of the tree's image list, 1 to 7.
    static QIcon treeImage(int image);

    // The view follows the core's expansions and selection through these.
    std::function<void(const QModelIndex &, bool)> expandRequested;
    std::function<void(const QModelIndex &)> selectRequested;

private:
    void aboutToReset() override;
    void resetDone() override;
    void aboutToRemoveChildren(TreeNode &parent, int count) override;
    void childrenRemoved(TreeNode &parent) override;
    void aboutToInsertChildren(TreeNode &parent, int count) override;
    void childrenInserted(TreeNode &parent) override;
    void expandedChanged(TreeNode &node) override;
    void selectionChanged(TreeNode *node) override;

    FolderTree &m_tree;
    const TreeNode *m_shownSelected = nullptr;
};

} // namespace kv
