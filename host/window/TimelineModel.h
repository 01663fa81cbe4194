// The timeline's pictures as the toolkit's views, selections and screen readers take them: a flat list, the latest
// first.
#pragma once

#include <memory>

#include <QAbstractListModel>

#include <host/window/MediaIndex.h>
#include <host/window/Texts.h>

namespace HynHost
{
class TimelineModel : public QAbstractListModel
{
public:
    // `texts` outlives the model.
    explicit TimelineModel(const Texts& texts) : m_texts(texts) {}

    // [main], all of them.

    void SetIndex(std::shared_ptr<const MediaIndex> index);
    [[nodiscard]] const std::shared_ptr<const MediaIndex>& Index() const noexcept { return m_index; }

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    // Said of an item rather than shown: kind, day and stars.
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;

private:
    const Texts& m_texts;
    std::shared_ptr<const MediaIndex> m_index = std::make_shared<const MediaIndex>();
};
} // namespace HynHost
