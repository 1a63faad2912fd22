#pragma once

#include "support/recorded.h"
#include "windowrig.h"

namespace kv::test {

using namespace Qt::StringLiterals;

inline QString flags(Qt::Alignment a)
{
    QStringList f;
    for (const auto &[bit, name] : {std::pair{Qt::AlignLeft, "left"}, {Qt::AlignRight, "right"}, {Qt::AlignHCenter, "hcenter"},
                                    {Qt::AlignTop, "top"}, {Qt::AlignBottom, "bottom"}, {Qt::AlignVCenter, "vcenter"}})
        if (a & bit)
            f.append(QLatin1String(name));
    return f.join(u'+');
}

// Where a widget sits in its parent's layouts: the path of indexes down nested layouts, a grid's
// cell and span, and a box's stretch.
inline QString place(QLayout *layout, QWidget *w)
{
    for (int i = 0; i < layout->count(); ++i) {
        QLayoutItem *item = layout->itemAt(i);
        QString here = QString::fromLatin1(layout->metaObject()->className() + 1) + u'[' + QString::number(i) + u']';
        if (auto *grid = qobject_cast<QGridLayout *>(layout)) {
            int r, c, rs, cs;
            grid->getItemPosition(i, &r, &c, &rs, &cs);
            here = u"grid(%1,%2 %3x%4)"_s.arg(r).arg(c).arg(rs).arg(cs);
        } else if (auto *box = qobject_cast<QBoxLayout *>(layout); box && box->stretch(i) != 0) {
            here += u" stretch %1"_s.arg(box->stretch(i));
        }
        if (item->widget() == w)
            return here;
        if (item->layout())
            if (QString inner = place(item->layout(), w); !inner.isEmpty())
                return here + u'/' + inner;
    }
    return {};
}

// Each control's texts, places in the layouts, states and screen reader texts, a line each; sizes following the font left out.
inline void describeWidgets(QWidget *w, QStringList &out, int depth = 0)
{
    QStringList p{QString(depth * 2, u' ') + QLatin1String(w->metaObject()->className()),
                  w->objectName().isEmpty() ? u"-"_s : w->objectName()};
    auto add = [&](const QString &key, const QString &value) {
        QString v = value;
        v.replace(u'\n', u"\\n"_s);
        if (!v.isEmpty())
            p.append(key + u'=' + (v.contains(u' ') ? u'"' + v + u'"' : v));
    };
    auto mark = [&](bool on, const char *word) {
        if (on)
            p.append(QLatin1String(word));
    };
    auto entries = [](int count, int chosen, const std::function<QString(int)> &text) {
        QStringList all;
        for (int i = 0; i < count; ++i)
            all.append((i == chosen ? u"*"_s : QString()) + text(i));
        return all.join(u'|');
    };
    mark(!w->isVisibleTo(w->window()), "hidden");
    mark(!w->isEnabled(), "disabled");
    if (w->parentWidget() && w->parentWidget()->layout())
        add(u"at"_s, place(w->parentWidget()->layout(), w));
    if (w->minimumSize() == w->maximumSize()) {
        add(u"fixed"_s, u"%1x%2"_s.arg(w->width()).arg(w->height()));
    } else if (!qobject_cast<QLabel *>(w)) {
        // Bounds the program sets (a label's follow its longest text, so they follow the font).
        auto bound = [](int v, int none) { return v == none ? u"-"_s : QString::number(v); };
        if (const QSize m = w->minimumSize(); !m.isNull())
            add(u"min"_s, bound(m.width(), 0) + u'x' + bound(m.height(), 0));
        if (const QSize m = w->maximumSize(); m != QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX))
            add(u"max"_s, bound(m.width(), QWIDGETSIZE_MAX) + u'x' + bound(m.height(), QWIDGETSIZE_MAX));
    }
    if (const QSizePolicy s = w->sizePolicy(); s.horizontalStretch() || s.verticalStretch())
        add(u"stretch"_s, u"%1,%2"_s.arg(s.horizontalStretch()).arg(s.verticalStretch()));
    if (QLayout *l = w->layout()) {
        const QMargins m = l->contentsMargins();
        add(u"layout"_s, u"%1 margins %2,%3,%4,%5 spacing %6"_s.arg(QLatin1String(l->metaObject()->className() + 1))
                             .arg(m.left()).arg(m.top()).arg(m.right()).arg(m.bottom()).arg(l->spacing()));
    }
    // What a label, button or text box shows (a progress bar's follows its value).
    if (!qobject_cast<QProgressBar *>(w))
        add(u"text"_s, w->property(qobject_cast<QPlainTextEdit *>(w) ? "plainText" : "text").toString());
    if (auto *l = qobject_cast<QLabel *>(w)) {
        if (const QPixmap picture = l->pixmap(); !picture.isNull())
            add(u"picture"_s, u"%1x%2"_s.arg(picture.width()).arg(picture.height()));
        if (l->alignment() != (Qt::AlignLeft | Qt::AlignVCenter))
            add(u"align"_s, flags(l->alignment()));
        if (l->buddy())
            add(u"buddy"_s, l->buddy()->objectName());
        mark(l->textInteractionFlags() & Qt::TextSelectableByMouse, "selectable");
        // Space the program gives a text of its own (a frame's or title's follows the style).
        if (const QMargins m = l->contentsMargins(); !m.isNull())
            add(u"padding"_s, u"%1,%2,%3,%4"_s.arg(m.left()).arg(m.top()).arg(m.right()).arg(m.bottom()));
    } else if (auto *b = qobject_cast<QAbstractButton *>(w)) {
        mark(b->isCheckable(), b->isChecked() ? "checked" : "unchecked");
        if (const QIcon icon = b->icon(); !icon.isNull()) {
            add(u"icon"_s, u"%1x%2"_s.arg(b->iconSize().width()).arg(b->iconSize().height()));
            // A picture of its own for the pointer over the button.
            mark(icon.pixmap(b->iconSize(), QIcon::Active).toImage() != icon.pixmap(b->iconSize()).toImage(), "hover-picture");
        }
        add(u"key"_s, b->shortcut().toString());
        mark(w->property("autoRaise").toBool(), "raised-on-hover"); // a tool button's
    } else if (auto *g = qobject_cast<QGroupBox *>(w)) {
        add(u"title"_s, g->title());
    } else if (auto *c = qobject_cast<QComboBox *>(w)) {
        add(u"items"_s, entries(c->count(), c->currentIndex(), [c](int i) { return c->itemText(i); }));
    } else if (auto *s = qobject_cast<QAbstractSlider *>(w)) {
        add(u"range"_s, u"%1..%2 step %3 page %4 value %5"_s.arg(s->minimum()).arg(s->maximum()).arg(s->singleStep())
                            .arg(s->pageStep()).arg(s->value()));
    } else if (auto *bar = qobject_cast<QProgressBar *>(w)) {
        add(u"range"_s, u"%1..%2 value %3"_s.arg(bar->minimum()).arg(bar->maximum()).arg(bar->value()));
    } else if (auto *tabs = qobject_cast<QTabBar *>(w)) {
        add(u"tabs"_s, entries(tabs->count(), tabs->currentIndex(), [tabs](int i) { return tabs->tabText(i); }));
    } else if (auto *bar = qobject_cast<QToolBar *>(w)) {
        QStringList actions;
        for (QAction *a : bar->actions())
            actions.append(a->isSeparator() ? u"|"_s : a->text() + (a->isChecked() ? u"*"_s : QString()));
        add(u"actions"_s, actions.join(u' '));
    } else if (auto *view = qobject_cast<QTreeView *>(w)) {
        QAbstractItemModel *m = view->model();
        QStringList columns;
        for (int c = 0; c < m->columnCount(); ++c)
            columns.append(m->headerData(c, Qt::Horizontal).toString() + u' '
                           + flags(Qt::Alignment(m->headerData(c, Qt::Horizontal, Qt::TextAlignmentRole).toInt())) + u' '
                           + QString::number(view->header()->sectionResizeMode(c)));
        mark(view->rootIsDecorated(), "branches");
        mark(view->selectionMode() == QAbstractItemView::ExtendedSelection, "many-selected");
        mark(view->allColumnsShowFocus(), "row-focus");
        add(u"columns"_s, view->isHeaderHidden() ? u"(header hidden)"_s : columns.join(u" | "));
        for (int r = 0; r < m->rowCount(); ++r) {
            QStringList cells;
            for (int c = 0; c < m->columnCount(); ++c) {
                const QModelIndex i = m->index(r, c);
                const QVariant check = i.data(Qt::CheckStateRole);
                static const QString boxes[] = {u"[ ] "_s, u"[-] "_s, u"[x] "_s};
                cells.append((check.isValid() ? boxes[check.toInt()] : QString())
                             + i.data().toString() + u' ' + flags(Qt::Alignment(i.data(Qt::TextAlignmentRole).toInt())));
            }
            add(u"row"_s, cells.join(u" | "));
        }
    }
    // Commands a widget carries for its keys and menus.
    if (!qobject_cast<QToolBar *>(w) && !qobject_cast<QAbstractButton *>(w)) {
        QStringList actions;
        for (QAction *a : w->actions())
            actions.append((a->text() + u' ' + a->shortcut().toString()).trimmed());
        add(u"commands"_s, actions.join(u" | "));
    }
    add(u"tip"_s, w->toolTip());
    if (QAccessibleInterface *a = QAccessible::queryAccessibleInterface(w)) {
        add(u"role"_s, QString::fromLatin1(QMetaEnum::fromType<QAccessible::Role>().valueToKey(a->role())));
        add(u"name"_s, a->text(QAccessible::Name));
        add(u"description"_s, a->text(QAccessible::Description));
    }
    out.append(p.join(u' '));
    // Controls made of Qt's own parts are recorded as one.
    for (const char *whole : {"QAbstractButton", "QComboBox", "QLineEdit", "QAbstractSlider", "QProgressBar", "QTabBar",
                              "QPlainTextEdit", "QTreeView"})
        if (w->inherits(whole))
            return;
    for (QObject *o : w->children())
        if (auto *child = qobject_cast<QWidget *>(o); child && !child->isWindow() && !child->objectName().startsWith(u"qt_"))
            describeWidgets(child, out, depth + 1);
}

} // namespace kv::test
