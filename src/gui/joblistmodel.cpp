#include "gui/joblistmodel.h"

#include <QFont>
#include <QIcon>

#include "app/maincontroller.h"
#include "engine/conversionrun.h"
#include "engine/jobfailure.h"
#include "ui/uitext.h"

namespace kv {

namespace {

// Sizes, percentages and times line up on the right; captions as their cells.
QVariant columnAlignment(int column)
{
    if (column >= EncodeJob::SourceSize)
        return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
    return {};
}

} // namespace

JobListModel::JobListModel(MainController &controller, QObject *parent)
    : QAbstractTableModel(parent), m_controller(controller)
{
}

int JobListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_shown.size());
}

int JobListModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : EncodeJob::ColumnCount;
}

void JobListModel::refresh()
{
    const ConversionRun *run = m_controller.run();
    static const std::vector<EncodeJob> none;
    const std::vector<EncodeJob> &jobs = run == nullptr ? none : run->jobs();
    if (jobs.size() != m_shown.size()) {
        beginResetModel();
        m_shown = jobs;
        endResetModel();
        return;
    }
    for (int r = 0; r < static_cast<int>(jobs.size()); ++r) {
        const auto i = static_cast<size_t>(r);
        if (jobs[i] == m_shown[i])
            continue;
        m_shown[i] = jobs[i];
        Q_EMIT dataChanged(index(r, 0), index(r, EncodeJob::ColumnCount - 1));
    }
}

QString JobListModel::failureText(int row) const
{
    const ConversionRun *run = m_controller.run();
    if (run == nullptr || row < 0 || row >= static_cast<int>(run->jobs().size()))
        return {};
    const EncodeJob &job = run->jobs()[static_cast<size_t>(row)];
    const QString &status = job[EncodeJob::Status];
    const UiText &t = m_controller.text();
    if (status == t.statusError || (status == t.statusDone && job.codecFailure))
        return jobFailureText(job);
    return {};
}

QVariant JobListModel::data(const QModelIndex &index, int role) const
{
    const ConversionRun *run = m_controller.run();
    if (!index.isValid() || run == nullptr || index.row() >= static_cast<int>(run->jobs().size()))
        return {};
    const EncodeJob &job = run->jobs()[static_cast<size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
        return job[index.column()];
    case Qt::FontRole:
        if (job.bold) {
            QFont bold;
            bold.setBold(true);
            return bold;
        }
        return {};
    case Qt::ToolTipRole: {
        // A tooltip does not wrap: its last lines only, each cut to its end. The details pane
        // holds all of it.
        const QString why = failureText(index.row());
        if (why.isEmpty())
            return {};
        constexpr int lineLimit = 10;
        constexpr int widthLimit = 160;
        QStringList lines = why.split(QLatin1Char('\n'));
        if (lines.size() > lineLimit)
            lines = lines.mid(0, 2) + QStringList(QStringLiteral("…")) + lines.mid(lines.size() - (lineLimit - 3));
        for (QString &line : lines) {
            if (line.size() > widthLimit)
                line = QStringLiteral("…") + line.right(widthLimit);
        }
        return lines.join(QLatin1Char('\n'));
    }
    case Qt::DecorationRole:
        if (index.column() == EncodeJob::Name && job.codecFailure
            && job[EncodeJob::Status] == m_controller.text().statusDone) {
            static const QIcon warning(QStringLiteral(":/icons/warning.svg"));
            return warning;
        }
        return {};
    case Qt::TextAlignmentRole:
        return columnAlignment(index.column());
    default:
        return {};
    }
}

QVariant JobListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= EncodeJob::ColumnCount)
        return {};
    if (role == Qt::DisplayRole)
        return m_controller.text().jobColumns.at(static_cast<size_t>(section));
    if (role == Qt::TextAlignmentRole)
        return columnAlignment(section);
    return {};
}

} // namespace kv
