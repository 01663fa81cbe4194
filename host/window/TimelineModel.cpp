#include <host/window/TimelineModel.h>

namespace HynHost
{
void TimelineModel::SetIndex(std::shared_ptr<const MediaIndex> index)
{
    beginResetModel();
    m_index = std::move(index);
    endResetModel();
}

int TimelineModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_index->Items().size());
}

QVariant TimelineModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::AccessibleTextRole))
        return {};
    const MediaItem& item = m_index->Items()[static_cast<std::size_t>(index.row())];
    const QString kind = QString::fromUtf8(MediaKindName(item.kind).data());
    const QString said =
        m_texts("item", {{QLatin1String("kind"), kind}, {QLatin1String("day"), m_texts.Day(item.day)}});
    return item.stars > 0 ? said + QStringLiteral(", ") + m_texts.Count("stars", item.stars) : said;
}
} // namespace HynHost
