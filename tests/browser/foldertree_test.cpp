#include <gtest/gtest.h>

#include "browser/filelist.h"
#include "browser/foldertree.h"
#include "support/fakefolders.h"
#include "support/qtprinters.h"

using namespace kv;

namespace {

struct Tree
{
    FakeFolders folders;
    FileListState list;
    int scans = 0;
    FolderTree tree{folders, list, [this] {
                        ++scans;
                        list.currentFolder = list.path;
                    }};

    Tree()
    {
        folders.add(QStringLiteral("/music/rock/old"), {QStringLiteral("a.MPC")});
        folders.add(QStringLiteral("/music/jazz"), {QStringLiteral("notes.txt")});
        folders.add(QStringLiteral("/music/.hidden"));
        folders.add(QStringLiteral("/music/wav"), {QStringLiteral("x.wav")});
        folders.add(QStringLiteral("/home"));
    }

    TreeNode *child(TreeNode *node, const char *text)
    {
        for (auto &c : node->children)
            if (c->text == QLatin1String(text))
                return c.get();
        return nullptr;
    }

    // "text:image/selected:children" of each child.
    QStringList describe(TreeNode *node)
    {
        QStringList out;
        for (auto &c : node->children)
            out.append(QStringLiteral("%1:%2/%3:%4").arg(c->text).arg(c->image).arg(c->selectedImage).arg(c->children.size()));
        return out;
    }
};

} // namespace

// Images, clicks, dot-folders and unreadable folders are in the window's tree test; here the
// quirks behind them.
TEST(FolderTree, BuildExpandClickAndCollapse)
{
    Tree t;
    ASSERT_EQ(t.tree.BuildTree(Volume{QStringLiteral("/media/usb"), QStringLiteral("vfat")}), BuildEnd::DriveNotReady);
    EXPECT_EQ(t.tree.root(), nullptr);
    ASSERT_EQ(t.tree.BuildTree(Volume{QStringLiteral("/"), QStringLiteral("ext4")}), BuildEnd::Built);
    TreeNode *root = t.tree.root();
    EXPECT_EQ(root->key, QStringLiteral("root"));
    EXPECT_EQ(t.tree.selected(), root);
    EXPECT_EQ(t.list.path, QStringLiteral("/"));
    EXPECT_EQ(t.scans, 0); // a new drive does not list its files
    EXPECT_EQ(t.describe(root), (QStringList{QStringLiteral("home:4/6:0"), QStringLiteral("music:4/6:3")}));

    TreeNode *music = t.child(root, "music");
    t.tree.Expand(*t.child(music, "rock"));
    // A folder holding only Musepack files (in upper case) counts as an audio folder.
    EXPECT_EQ(t.describe(t.child(music, "rock")), QStringList{QStringLiteral("old:5/7:0")});
    // Expanding again lists afresh: the same keys, no duplicates, new folders seen.
    t.folders.add(QStringLiteral("/music/blues"));
    t.tree.Expand(*music);
    EXPECT_EQ(music->children.size(), 4U);
    EXPECT_EQ(music->children[0]->key, QStringLiteral("/music/0"));
    EXPECT_EQ(FolderTree::fullPath(*music->children[0]), QStringLiteral("/music/blues"));

    TreeNode *wav = t.child(music, "wav");
    t.tree.NodeClick(*wav);
    t.tree.NodeClick(*wav); // the folder already shown is not read again
    EXPECT_EQ(t.scans, 1);
    EXPECT_EQ(t.list.path, QStringLiteral("/music/wav/"));
    t.tree.Collapse(*music); // not the selected node: nothing
    EXPECT_EQ(t.scans, 1);
    t.tree.Collapse(*wav);
    EXPECT_EQ(t.scans, 2);
    // Re-expanding the parent of the selected folder hands the selection to the parent.
    t.tree.Expand(*music);
    EXPECT_EQ(t.tree.selected(), music);
    // Paths are trimmed: a folder whose name ends in a blank is read without it, clicked or folded.
    t.folders.add(QStringLiteral("/music/live "));
    t.tree.Expand(*music);
    TreeNode *live = t.child(music, "live ");
    ASSERT_NE(live, nullptr);
    t.tree.NodeClick(*live);
    EXPECT_EQ(t.list.path, QStringLiteral("/music/live/"));
    t.list.path.clear();
    t.tree.Collapse(*live);
    EXPECT_EQ(t.list.path, QStringLiteral("/music/live/"));
    // Another drive: the old tree and its selection go together (the sanitizer build reads freed
    // nodes otherwise).
    ASSERT_EQ(t.tree.BuildTree(Volume{QStringLiteral("/music"), QString()}), BuildEnd::Built);
    EXPECT_EQ(t.tree.selected(), t.tree.root());
}

TEST(FolderTree, ReadsEachFolderOnceWhenExpanding)
{
    Tree t;
    for (int i = 0; i < 50; ++i)
        t.folders.add(QStringLiteral("/many/f%1").arg(i, 2, 10, QLatin1Char('0')), {QStringLiteral("a.wav")});
    t.tree.BuildTree(Volume{QStringLiteral("/many"), QString()});
    // The root and each child once, the root even though the drive check read it first.
    EXPECT_EQ(t.folders.listings, 1 + 50);
    EXPECT_EQ(t.tree.root()->children.size(), 50U);
}
