// TabRec.h: the record behind one row of a tree of desktops, menu elements or resources.
#ifndef ORVO_MODELS_TABREC_H
#define ORVO_MODELS_TABREC_H

#include "models/MyFileInfo.h"
#include "models/RowValues.h"

#include <QList>
#include <QVariant>
#include <QVector>

#include <cstdint>
#include <memory>

namespace orvo {
template <class Record>
struct RecordOps;
template <class Record>
class RowBatch;
} // namespace orvo

/// One row: a value per column, its children in display order, which it owns, and a back pointer to
/// its parent. The records of a model are changed through the model only, which keeps an index of
/// their keys. Values that come from a record of a table are read from there until one of them is
/// written.
class TabRec {
public:
    /// A row at the level below `parent` (-1 without one). The parent does not list it by this.
    explicit TabRec(const QVector<QVariant>& data, TabRec* parent = nullptr);
    TabRec(const orvo::RowValues& values, TabRec* parent);
    /// Deletes the children with all below them.
    ~TabRec();
    TabRec(const TabRec&) = delete;
    TabRec& operator=(const TabRec&) = delete;

    /// Null outside 0 .. childCount() - 1.
    TabRec* child(int number);
    const TabRec* child(int number) const;
    int childCount() const { return m_childItems.size(); }
    int columnCount() const { return m_itemData.size(); }
    /// An invalid QVariant outside the columns.
    QVariant data(int column) const;
    /// False, and nothing stored, outside the columns.
    bool setData(int column, const QVariant& value);
    TabRec* parent() { return m_parentItem; }
    const TabRec* parent() const { return m_parentItem; }
    /// Position in the parent's list; -1 if there is no parent or it does not list this record.
    int childNumber() const;

    /// New children with `columns` invalid values each. False if `position` is not in
    /// 0 .. childCount(); true at once if `count` is below 1.
    bool insertChildren(int position, int count, int columns);
    /// Deletes children with all below them. False if the range is not all there; true at once if
    /// `count` is below 1.
    bool removeChildren(int position, int count);
    /// The same columns here and in every record below. False, and nothing changed, if this record
    /// has no such position; a record below that has not stays as it is, with all below it.
    bool insertColumns(int position, int columns);
    bool removeColumns(int position, int columns);

    /// Replaces the back pointer and nothing else.
    void setParent(TabRec* parent) { m_parentItem = parent; }
    /// Lists the children of `other` here as well, behind the present ones, and becomes their
    /// parent; `other` keeps its list. Whichever of the two goes last deletes them. Always 0.
    int getChildrens(TabRec* other);

    int level() const { return m_level; }
    bool isExpanded() const { return m_expanded; }
    void setExpanded(bool expanded) { m_expanded = expanded; }
    Qt::CheckState checkState() const { return m_checkState; }
    void setCheckState(Qt::CheckState state) { m_checkState = state; }

    int fileInfoCount() const { return m_rare ? m_rare->fileInfoCount : 0; }
    /// Adds an empty element and gives its position.
    int addfileInfoElement();
    void clearFileInfo();
    /// A position outside the list is ignored.
    void setfileInfo(int number, const MyFileInfo& info);
    /// Null outside the list; valid until the list changes.
    MyFileInfo* getfileInfo(int number);

private:
    friend struct orvo::RecordOps<TabRec>;
    template <class Record>
    friend class orvo::RowBatch;

    /// What hardly any row has.
    struct Rare {
        std::unique_ptr<MyFileInfo[]> fileInfo;
        int32_t fileInfoCount = 0;
        int32_t furtherLists = 0; ///< lists of other records that hold this one, see getChildrens
    };
    Rare& rare();

    QList<TabRec*> m_childItems; ///< owned
    orvo::RowValues m_itemData;
    TabRec* m_parentItem; ///< not owned
    std::unique_ptr<Rare> m_rare;
    int32_t m_level;
    mutable int32_t m_rowHint = 0; ///< the row it was last seen at
    bool m_expanded = false;
    bool m_keyNoted = false; ///< of a row on its way into a model, see RowBatch
    Qt::CheckState m_checkState : 8 = Qt::Unchecked;
};
// Qt 5: 56 bytes, with the heap's own eight one line of the cache. A list of Qt 6 takes 16 more.
static_assert(sizeof(TabRec) <= 40 + sizeof(QList<TabRec*>) + sizeof(QVector<QVariant>));

#endif
