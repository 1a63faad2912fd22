#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include <QString>

#include "platform/folders.h"
#include "platform/volumes.h"

namespace kv {

class Folders;
struct FileListState;

// One node of the folder tree tvMain: the drive's root or a folder.
struct TreeNode
{
    // "root" for the drive node; "<parent's normalised path><position>" for a folder added by
    // expanding its parent; empty for the folders listed one level ahead.
    QString key;
    QString text;          // the mount point for the root, the folder's own name otherwise
    int image = 0;         // 1-based into the seven tree images; 0 none
    int selectedImage = 0; // 0: the node shows its image when selected too
    TreeNode *parent = nullptr;
    int row = 0; // position among its parent's children
    std::vector<std::unique_ptr<TreeNode>> children;
    std::uint64_t serial = 0; // creation order, the order the tree searches its nodes in
    bool expanded = false;
};

// The images of the tree, in image-list order.
enum TreeImage {
    ImageDriveFixed = 1,
    ImageDriveRemovable = 2,
    ImageDriveCdRom = 3,
    ImageFolder = 4,
    ImageFolderAudio = 5,
    ImageFolderOpen = 6,
    ImageFolderAudioOpen = 7,
};

// Told about every change, so an item model over the tree can follow it row by row.
class TreeObserver
{
public:
    virtual ~TreeObserver() = default;
    virtual void aboutToReset() {}
    virtual void resetDone() {}
    virtual void aboutToRemoveChildren(TreeNode & /*parent*/, int /*count*/) {}
    virtual void childrenRemoved(TreeNode & /*parent*/) {}
    virtual void aboutToInsertChildren(TreeNode & /*parent*/, int /*count*/) {}
    virtual void childrenInserted(TreeNode & /*parent*/) {}
    virtual void expandedChanged(TreeNode & /*node*/) {}
    virtual void selectionChanged(TreeNode * /*node*/) {}
};

enum class BuildEnd { Built, DriveNotReady, Stopped };

// The folder tree and its handlers, without widgets. It reads folders through Folders, hands the
// chosen folder to the file list by setting its path, and asks for a scan through `scan`.
// Children are listed one level ahead: a folder shows an expand button as soon as its parent is
// open, and its own children are listed again each time it is expanded.
class FolderTree
{
public:
    FolderTree(Folders &folders, FileListState &fileList, std::function<void()> scan);
    ~FolderTree();

    void setObserver(TreeObserver *observer) { m_observer = observer; }

    TreeNode *root() const { return m_root.get(); }
    TreeNode *selected() const { return m_selected; }
    // The texts from the root down joined with "/", no doubled "/".
    static QString fullPath(const TreeNode &node);
    // Trimmed, with a trailing "/".
    static QString normalised(const QString &path);

    // Rebuilds the tree for `drive` and expands its root, which selects it and points the file
    // list at it (without a scan). A drive that cannot be listed leaves the tree as it was.
    BuildEnd BuildTree(const Volume &drive);
    // Lists the node's sub-folders again, each with its image and its own sub-folders one level
    // ahead. False when the node's folder could not be listed (it is then left without children).
    bool Expand(TreeNode &node);
    // Rescans when the collapsed node is the selected one.
    void Collapse(TreeNode &node);
    // Selects the node and lists it, unless it is the folder already shown.
    void NodeClick(TreeNode &node);
    // Opens the tree down along path, one component at a time (a missing one is passed over),
    // then lists the deepest folder reached.
    void OpenTreeAt(const QString &path);

    // Every node in creation order (for tests and the search above).
    std::vector<TreeNode *> nodesInCreationOrder() const;

private:
    void removeChildren(TreeNode &node);
    // Expand with the node's listing when the caller has already read it.
    bool expandWith(TreeNode &node, std::optional<FolderListing> listing);
    void select(TreeNode *node);
    std::unique_ptr<TreeNode> newNode(TreeNode *parent, QString key, QString text);

    Folders &m_folders;
    FileListState &m_fileList;
    std::function<void()> m_scan;
    TreeObserver *m_observer = nullptr;
    TreeObserver m_none;
    std::unique_ptr<TreeNode> m_root;
    TreeNode *m_selected = nullptr;
    std::uint64_t m_nextSerial = 1;

    TreeObserver &observer() { return m_observer != nullptr ? *m_observer : m_none; }
};

} // namespace kv
