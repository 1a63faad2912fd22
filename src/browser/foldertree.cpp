#include "browser/foldertree.h"

#include <algorithm>

#include "browser/filelist.h"
#include "common/checked.h"
#include "common/failure.h"
#include "platform/folders.h"

namespace kv {

FolderTree::FolderTree(Folders &folders, FileListState &fileList, std::function<void()> scan)
    : m_folders(folders), m_fileList(fileList), m_scan(std::move(scan))
{
}

FolderTree::~FolderTree() = default;

QString FolderTree::fullPath(const TreeNode &node)
{
    if (node.parent == nullptr)
        return node.text;
    QString path = fullPath(*node.parent);
    if (!path.endsWith(QLatin1Char('/')))
        path += QLatin1Char('/');
    return path + node.text;
}

QString FolderTree::normalised(const QString &path)
{
    QString p = path.trimmed();
    if (!p.endsWith(QLatin1Char('/')))
        p += QLatin1Char('/');
    return p;
}

std::unique_ptr<TreeNode> FolderTree::newNode(TreeNode *parent, QString key, QString text)
{
    auto node = std::make_unique<TreeNode>();
    node->key = std::move(key);
    node->text = std::move(text);
    node->parent = parent;
    node->serial = m_nextSerial++;
    return node;
}

void FolderTree::select(TreeNode *node)
{
    m_selected = node;
    observer().selectionChanged(node);
}

BuildEnd FolderTree::BuildTree(const Volume &drive)
{
    BuildEnd end = BuildEnd::Stopped;
    guarded([&] {
        // A drive that cannot be listed is reported before anything of the old tree goes; the
        // listing that tells so fills the root.
        std::optional<FolderListing> listing = m_folders.listFolder(normalised(drive.mountPoint));
        if (!listing) {
            end = BuildEnd::DriveNotReady;
            return;
        }
        observer().aboutToReset();
        m_selected = nullptr;
        m_root = newNode(nullptr, QStringLiteral("root"), drive.mountPoint);
        m_root->image = static_cast<int>(driveKind(drive));
        // A placeholder gives the root its expand button until the root is listed.
        m_root->children.push_back(newNode(m_root.get(), QStringLiteral("tree"), QStringLiteral("Hello")));
        observer().resetDone();
        expandWith(*m_root, std::move(listing));
        end = BuildEnd::Built;
    });
    return end;
}

void FolderTree::removeChildren(TreeNode &node)
{
    if (node.children.empty())
        return;
    for (TreeNode *s = m_selected; s != nullptr; s = s->parent) {
        if (s->parent == &node) {
            select(&node); // the selection goes with its folder; its parent takes it
            break;
        }
    }
    observer().aboutToRemoveChildren(node, static_cast<int>(node.children.size()));
    node.children.clear();
    observer().childrenRemoved(node);
}

bool FolderTree::Expand(TreeNode &node)
{
    return expandWith(node, std::nullopt);
}

bool FolderTree::expandWith(TreeNode &node, std::optional<FolderListing> listing)
{
    return guarded([&] {
        removeChildren(node);
        node.expanded = true;
        observer().expandedChanged(node);
        const QString p = normalised(fullPath(node));
        if (!listing)
            listing = m_folders.listFolder(p);
        if (!listing)
            throw Failure("folder not listed");
        // The folder counter is 16-bit: more than 32,767 sub-folders end the expansion here.
        const Int16 n = static_cast<long long>(listing->folders.size());

        std::vector<std::unique_ptr<TreeNode>> added;
        added.reserve(static_cast<size_t>(n.value()));
        for (Int16 j = 0; j < n; ++j) {
            const QString &name = listing->folders.at(j);
            auto child = newNode(&node, p + QString::number(j.value()), name.mid(name.lastIndexOf(QLatin1Char('/')) + 1));
            child->row = j;
            added.push_back(std::move(child));
        }
        for (auto &child : added) {
            // A sub-folder that cannot be read shows as an empty folder; its siblings still list.
            const FolderListing inner = m_folders.listFolder(fullPath(*child)).value_or(FolderListing{});
            const bool audio = inner.audioKinds != 0;
            child->image = audio ? ImageFolderAudio : ImageFolder;
            child->selectedImage = audio ? ImageFolderAudioOpen : ImageFolderOpen;
            for (qsizetype k = 0; k < inner.folders.size(); ++k) {
                auto ahead = newNode(child.get(), QString(), inner.folders.at(k));
                ahead->row = static_cast<int>(k);
                child->children.push_back(std::move(ahead));
            }
        }
        if (!added.empty()) {
            observer().aboutToInsertChildren(node, static_cast<int>(added.size()));
            node.children = std::move(added);
            observer().childrenInserted(node);
        }
        if (&node == m_root.get()) {
            select(m_root.get());
            m_fileList.path = p;
        }
    });
}

void FolderTree::Collapse(TreeNode &node)
{
    node.expanded = false;
    if (&node != m_selected)
        return;
    m_fileList.path = normalised(fullPath(node));
    if (m_scan)
        m_scan();
}

void FolderTree::NodeClick(TreeNode &node)
{
    select(&node);
    const QString p = normalised(fullPath(node));
    // Exact comparison: the folder already shown is not read again.
    if (p == m_fileList.currentFolder)
        return;
    m_fileList.path = p;
    if (m_scan)
        m_scan();
}

std::vector<TreeNode *> FolderTree::nodesInCreationOrder() const
{
    std::vector<TreeNode *> nodes;
    std::vector<TreeNode *> stack;
    if (m_root)
        stack.push_back(m_root.get());
    while (!stack.empty()) {
        TreeNode *n = stack.back();
        stack.pop_back();
        nodes.push_back(n);
        for (auto &c : n->children)
            stack.push_back(c.get());
    }
    std::sort(nodes.begin(), nodes.end(), [](const TreeNode *a, const TreeNode *b) { return a->serial < b->serial; });
    return nodes;
}

void FolderTree::OpenTreeAt(const QString &path)
{
    guarded([&] {
        if (m_root && normalised(path) != normalised(m_root->text)) {
            // Each component is looked for among the nodes made after the previous match, by its
            // text and its parent's path: for "/home/ann/Music" those are "home" under "/",
            // "ann" under "/home", "Music" under "/home/ann".
            std::uint64_t after = 0;
            const QStringList parts = path.split(QLatin1Char('/'));
            QString prefix;
            for (qsizetype i = 0; i < parts.size(); ++i) {
                const QString &name = parts.at(i);
                if (i > 0) {
                    const std::vector<TreeNode *> nodes = nodesInCreationOrder();
                    for (TreeNode *n : nodes) {
                        if (n->serial <= after || n->text != name || n->parent == nullptr
                            || fullPath(*n->parent) != (prefix.isEmpty() ? QStringLiteral("/") : prefix))
                            continue;
                        Expand(*n);
                        select(n);
                        m_fileList.path = fullPath(*n) + QLatin1Char('/');
                        after = n->serial;
                        break;
                    }
                }
                prefix += (i > 0 ? QStringLiteral("/") : QString()) + name;
            }
        }
        if (m_scan)
            m_scan();
    });
}

} // namespace kv
